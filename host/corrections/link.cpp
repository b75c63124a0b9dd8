#include "host/corrections/link.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "host/run/failure.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kStalledPause{200};
// So much without a message of RTCM 3 is worth a word.
constexpr long long kMuch = 16 << 10;

CorrectionSource Checked(const CorrectionOptions& options) {
  CorrectionSource source = ParseCorrections(options.source);
  using Kind = CorrectionSource::Kind;
  if (source.kind == Kind::caster || source.kind == Kind::tcp) CheckNetwork(source);
  return source;
}

}  // namespace

const char* NameOf(CorrectionStatus::State state) {
  constexpr const char* kNames[] = {"connecting", "flowing", "waiting", "ended"};
  return kNames[static_cast<int>(state)];
}

std::string TypesOf(const CorrectionStatus& status) {
  std::string text;
  for (const auto& [type, count] : status.types) text += (text.empty() ? "" : " ") + std::to_string(type);
  return text;
}

CorrectionLink::CorrectionLink(const CorrectionOptions& options, Write write, const Limits& limits)
    : options_(options),
      source_(Checked(options)),
      password_(CorrectionsPassword(options.password_file)),
      write_(std::move(write)),
      limits_(limits),
      queue_(limits.queue) {
  status_.source = source_.Name();
}

void CorrectionLink::Start() {
  if (reader_.joinable()) return;
  reader_ = std::thread([this] { Read(); });
  writer_ = std::thread([this] { Pass(); });
}

void CorrectionLink::Stop() {
  stop_.Set();
  queue_.Stop();
  if (reader_.joinable()) reader_.join();
  if (writer_.joinable()) writer_.join();
}

void CorrectionLink::SetPosition(const std::string& gga) {
  const std::lock_guard lock(mutex_);
  gga_ = gga;
}

CorrectionStatus CorrectionLink::Status() const {
  const std::lock_guard lock(mutex_);
  CorrectionStatus status = status_;
  if (message_at_) status.age = std::chrono::duration<double>(Clock::now() - *message_at_).count();
  return status;
}

void CorrectionLink::Read() {
  auto pause = limits_.first_pause;
  for (;;) {
    const int before = Status().connections;
    const SourceEnd end = ReadOnce();
    if (end.kind == SourceEnd::Kind::stopped) return;
    Note(end);
    if (end.kind == SourceEnd::Kind::refused) return;
    if (Status().connections > before) pause = limits_.first_pause;
    if (end.kind == SourceEnd::Kind::absent) pause = limits_.longest_pause;
    if (!Pause(pause)) return;
    pause = std::min(2 * pause, limits_.longest_pause);
  }
}

SourceEnd CorrectionLink::ReadOnce() {
  framer_.Clear();
  {
    const std::lock_guard lock(mutex_);
    if (status_.state == CorrectionStatus::State::flowing)
      status_.state = CorrectionStatus::State::connecting;
  }
  const SourcePeer peer{[this](std::string_view bytes) { Take(bytes); },
                        [this] {
                          const std::lock_guard lock(mutex_);
                          return gga_;
                        },
                        stop_, options_.gga_interval, limits_.patience};
  using Kind = CorrectionSource::Kind;
  const bool is_path = source_.kind == Kind::device || source_.kind == Kind::file;
  return is_path ? ReadPath(source_, options_.baud, peer) : ReadNetwork(source_, password_, peer);
}

// False at the end.
bool CorrectionLink::Pause(std::chrono::milliseconds time) const {
  pollfd wait{stop_.Descriptor(), POLLIN, 0};
  return poll(&wait, 1, static_cast<int>(time.count())) == 0;
}

void CorrectionLink::Note(const SourceEnd& end) {
  const bool is_over = end.kind == SourceEnd::Kind::refused;
  {
    const std::lock_guard lock(mutex_);
    status_.state = is_over ? CorrectionStatus::State::ended : CorrectionStatus::State::waiting;
    status_.trouble = end.reason;
  }
  if (std::exchange(told_, end.reason) == end.reason) return;
  Complain("corrections from " + source_.Name() + ": " + end.reason + (is_over ? "" : "; it is tried again"));
}

void CorrectionLink::NoteFlow() {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(status_.state, CorrectionStatus::State::flowing) == CorrectionStatus::State::flowing)
      return;
    ++status_.connections;
    status_.trouble.clear();
  }
  if (!std::exchange(told_, {}).empty()) Complain("corrections from " + source_.Name() + " come again");
}

void CorrectionLink::Take(std::string_view bytes) {
  NoteFlow();
  framer_.Feed(bytes, [this](std::string_view piece, std::optional<int> type) { TakePiece(piece, type); });
  bool is_foreign = false;
  {
    const std::lock_guard lock(mutex_);
    status_.bytes += static_cast<long long>(bytes.size());
    status_.bad_checksums = framer_.BadChecksums();
    is_foreign = status_.messages == 0 && status_.bytes > kMuch;
  }
  if (!is_foreign || std::exchange(warned_, true)) return;
  Complain("corrections from " + source_.Name() + " hold no message of RTCM 3: " +
           (options_.rtcm_only ? "nothing of them passes" : "they go to the receiver as they are"));
}

void CorrectionLink::TakePiece(std::string_view piece, std::optional<int> type) {
  const bool passes = type || !options_.rtcm_only;
  const bool waits = source_.kind == CorrectionSource::Kind::file;
  const int dropped = passes ? queue_.Add(std::string(piece), waits) : 1;
  const std::lock_guard lock(mutex_);
  status_.dropped += dropped;
  if (!type) return;
  ++status_.messages;
  ++status_.types[*type];
  message_at_ = Clock::now();
}

void CorrectionLink::Pass() {
  while (const auto piece = queue_.Take()) {
    std::string_view rest = *piece;
    for (;;) {
      rest.remove_prefix(write_(rest));
      if (rest.empty() || !queue_.Rest(kStalledPause)) break;
    }
    const std::lock_guard lock(mutex_);
    status_.written += static_cast<long long>(piece->size() - rest.size());
    if (!rest.empty()) ++status_.dropped;
  }
}

}  // namespace host
