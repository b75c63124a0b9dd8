#include "gpsengine/face/decode.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <string_view>
#include <system_error>
#include <utility>

#include "gpsengine/face/blockguard.h"
#include "gpsengine/face/engineuse.h"
#include "gpsengine/face/messagewindow.h"
#include "gpsengine/face/models.h"
#include "gpsengine/face/pacer.h"
#include "gpsengine/face/port.h"
#include "gpsengine/face/shelf.h"
#include "gpsengine/face/tally.h"
#include "gpsengine/face/unpacedclock.h"
#include "gpsengine/platform/monitor.h"
#include "gpsengine/sentences/datescan.h"

namespace gps {

namespace {

// What is read at a time, and what is decoded at a time.
constexpr std::size_t kPiece = 65'536, kChunk = 4096;
// Bytes without a line end are played in lines of this length.
constexpr std::size_t kLongestLine = 512;

/// Gives the next bytes, which are good until the next call; none at the end.
using Reader = std::function<std::string_view()>;

Reader ReaderOf(std::istream& stream) {
  return [&stream, piece = std::string()]() mutable -> std::string_view {
    piece.resize(kPiece);
    stream.read(piece.data(), static_cast<std::streamsize>(kPiece));
    return std::string_view(piece).substr(0, static_cast<std::size_t>(stream.gcount()));
  };
}

Reader ReaderOf(std::span<const std::byte> bytes) {
  return [bytes]() mutable -> std::string_view {
    const auto piece = bytes.first(std::min(kPiece, bytes.size()));
    bytes = bytes.subspan(piece.size());
    return {reinterpret_cast<const char*>(piece.data()), piece.size()};
  };
}

Reader ReaderOf(const std::filesystem::path& file) {
  errno = 0;
  const auto stream = std::make_shared<std::ifstream>(file, std::ios::binary);
  char head[2] = {};
  stream->read(head, sizeof head);
  const std::string cannot = "cannot read " + file.string() + ": ";
  if (stream->gcount() == 0) {
    throw Error(ErrorCode::failed,
                cannot + (errno != 0 ? std::generic_category().message(errno) : "the file is empty"));
  }
  if (head[0] == '\x1F' && head[1] == '\x8B') {
    throw Error(ErrorCode::failed, cannot + "it is packed: unpack it first, with gunzip");
  }
  stream->clear();  // a file of one byte has ended by now
  stream->seekg(0);
  return [stream, read = ReaderOf(*stream)] { return read(); };
}

/// Gives a text log the carriage returns that were dropped: a recording without any at all.
class LineEnds {
 public:
  std::string_view Mend(std::string_view piece) {
    if (!is_text_) is_text_ = piece.find('\n') != piece.npos && piece.find('\r') == piece.npos;
    if (!*is_text_) return piece;
    mended_.clear();
    for (const char c : piece) (c == '\n' ? mended_ += '\r' : mended_) += c;
    return mended_;
  }

 private:
  std::optional<bool> is_text_;  // as the first piece shows
  std::string mended_;
};

}  // namespace

/// The engine that decodes, on whatever thread asks.
class Recording::Play : public Stream {
 public:
  Play(Reader read, const DecodeOptions& options);

  bool Next(std::size_t alternative, Record& record, const Wait& wait) override;
  void Want(std::size_t alternative) override { shelf_.Want(Shelf::ReaderOf(alternative)); }
  long long Understood() const { return TallyOf(engine_).Good(); }

 private:
  void Take(Record&& record);
  std::string_view NextBytes();
  bool IsDue(std::string_view bytes, const std::stop_token& stop);
  void Decode(std::string_view bytes);
  void Date(std::string_view bytes);

  const EngineUse use_;
  const DecodeOptions options_;
  const Reader read_;
  CGPSEngine engine_;
  Shelf shelf_;
  MessageWindow window_;
  BlockGuard guard_;
  DateScan dates_;
  LineEnds ends_;
  std::optional<Pacer> pacer_;
  std::string_view piece_;  // what of it is to come
  std::size_t due_ = 0;     // of its bytes, for which the pacer has been asked
  Pacer::Clock::time_point due_at_;
  bool at_end_ = false;
};

Recording::Play::Play(Reader read, const DecodeOptions& options)
    : options_(options),
      read_(std::move(read)),
      window_(engine_, [this](Record&& record) { Take(std::move(record)); }) {
  if (!(options.speed >= 0.0)) throw Error(ErrorCode::usage, "the speed of a recording is 0 or more");
  CGPSReceiver& receiver = *engine_.FindReceiver(FindModel(options.model).GetName());
  const UnpacedClock clock;
  engine_.InitReceivers();
  receiver.SetupReceiver(kPort, 0, options.antenna_height, "", true);
  engine_.SetReceiver(&receiver);
  // Without what the make would set up: there is no receiver to hear it.
  receiver.CGPSReceiver::Initialize();
  piece_ = ends_.Mend(read_());
  if (options.date) window_.SetReference(*options.date + kDay / 2);
  Date(piece_);  // it may tell its date some way after its first fix
  if (options.speed > 0.0) pacer_.emplace(options.speed, piece_, receiver.GetCurrentBaudrate());
}

void Recording::Play::Take(Record&& record) {
  if (shelf_.IsWanted(record.index())) shelf_.Put(std::move(record));
}

/// Tells when the recording was made, as far as it says so itself.
void Recording::Play::Date(std::string_view bytes) {
  if (options_.date) return;
  dates_.Feed(bytes);
  if (const auto date = dates_.Latest()) window_.SetReference(date);
}

bool Recording::Play::Next(std::size_t alternative, Record& record, const Wait& wait) {
  const std::size_t reader = Shelf::ReaderOf(alternative);
  while (!shelf_.Take(reader, record)) {
    if (at_end_ || wait.stop.stop_requested()) return false;
    const std::string_view bytes = NextBytes();
    if (!IsDue(bytes, wait.stop)) return false;
    piece_.remove_prefix(bytes.size());
    due_ = 0;
    if (!shelf_.HasMore()) shelf_.Forget();
    Decode(bytes);
  }
  return true;
}

/// The bytes to decode next; none at the end.
std::string_view Recording::Play::NextBytes() {
  if (piece_.empty()) piece_ = ends_.Mend(read_());
  if (!pacer_) return piece_.substr(0, kChunk);
  const std::size_t end = piece_.substr(0, kLongestLine).find('\n');
  return piece_.substr(0, end == piece_.npos ? kLongestLine : end + 1);
}

/// Waits for when the bytes are due. False if the token was stopped meanwhile.
bool Recording::Play::IsDue(std::string_view bytes, const std::stop_token& stop) {
  if (!pacer_ || bytes.empty()) return true;
  if (std::exchange(due_, bytes.size()) == 0) due_at_ = pacer_->DueOf(bytes);
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(due_at_ - Pacer::Clock::now());
  if (wait.count() <= 0) return true;
  Monitor monitor;
  auto lock = monitor.Enter();
  monitor.Wait(lock, stop, wait, [] { return false; });
  return !stop.stop_requested();
}

void Recording::Play::Decode(std::string_view bytes) {
  const UnpacedClock clock;
  engine_.m_bAttachRawData = shelf_.IsWanted(AlternativeOf<Raw>());
  window_.WantSkies(shelf_.IsWanted(AlternativeOf<Sky>()));
  window_.WantReports(shelf_.IsWanted(AlternativeOf<Report>()));
  // On this thread, which may be another one than the last time.
  window_.Open();
  if (bytes.empty()) {
    at_end_ = true;
    window_.Finish();
  } else {
    Date(bytes);
    const std::string_view guarded = guard_.Pass(bytes);
    CBinBuffer chunk(guarded.data(), static_cast<int>(guarded.size()));
    const CPostAtOnce to_window(window_);
    engine_.UpdateGPSBuffer(chunk);
  }
  window_.Close();
}

Recording::Recording(std::shared_ptr<Play> play) : Source(play), play_(std::move(play)) {}

long long Recording::understood() const {
  return play_->Understood();
}

Recording decode(const std::filesystem::path& file, DecodeOptions options) {
  return Recording(std::make_shared<Recording::Play>(ReaderOf(file), options));
}

Recording decode(std::istream& stream, DecodeOptions options) {
  return Recording(std::make_shared<Recording::Play>(ReaderOf(stream), options));
}

Recording decode(std::span<const std::byte> bytes, DecodeOptions options) {
  return Recording(std::make_shared<Recording::Play>(ReaderOf(bytes), options));
}

}  // namespace gps
