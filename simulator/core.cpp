#include "simulator/core.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "simulator/text.h"

namespace simulator {
namespace {

constexpr std::size_t kLongestLine = 1000, kMostComplaints = 1000;
constexpr double kBootSeconds = 3, kCorrectionsHold = 30;
constexpr int kCorrectionsForFixed = 10;  // until then, an RTK solution floats

std::string Printable(std::string_view line) {
  std::string text;
  for (const char c : line.substr(0, 120)) {
    text += c >= ' ' && c <= '~' ? std::string(1, c) : Format("\\x%02X", static_cast<unsigned char>(c));
  }
  return text;
}

}  // namespace

Nanoseconds FromSeconds(double seconds) {
  return Nanoseconds(std::llround(seconds * 1e9));
}

Core::Core(const Options& options, int baud) : options_(options), world_(options), baud_(baud) {
  AddMessage("GGA", Gga);
  AddMessage("GSA", Gsa);
  AddMessage("GSV", Gsv);
  AddMessage("VTG", Vtg);
  AddMessage("RMC", Rmc);
  AddMessage("GLL", Gll);
  AddMessage("ZDA", Zda);
}

void Core::AddMessage(std::string name, Writer writer) {
  messages_.push_back({std::move(name), std::move(writer)});
}

bool Core::HasMessage(std::string_view name) const {
  return std::any_of(messages_.begin(), messages_.end(), [name](const Message& m) { return m.name == name; });
}

void Core::LeaveFactory(std::initializer_list<const char*> messages, Settings others) {
  for (const char* name : messages) {
    if (!options_.gga_only) others.output[name] = UsualInterval();
  }
  others.output["GGA"] = UsualInterval();
  factory_ = saved_ = settings_ = std::move(others);
}

GpsTime Core::Now() const {
  return world_.TimeAt(static_cast<double>(now_.count()) * 1e-9);
}

std::vector<std::string> Core::TakeComplaints() {
  return std::exchange(complaints_, {});
}

void Core::Complain(std::string_view line, std::string_view reason) {
  if (complaints_.size() < kMostComplaints)
    complaints_.push_back(std::string(reason) + ": " + Printable(line));
}

// Input.

std::size_t Core::TakeFrame(std::string_view) {
  return 0;
}

// As TakeFrame does, messages of RTCM 3. They are worth something for half a minute.
std::size_t Core::TakeCorrections(std::string_view input) {
  const auto at = [input](std::size_t i) { return static_cast<unsigned char>(input[i]); };
  constexpr unsigned kPreamble = 0xD3;
  if (at(0) != kPreamble || (input.size() > 1 && (at(1) & 0xFC) != 0)) return 0;
  if (input.size() < 3) return std::string::npos;
  const std::size_t length = 6 + (at(1) << 8 | at(2));
  if (input.size() < length) return std::string::npos;
  unsigned crc = 0;  // over the checksum, too, that is 0
  for (std::size_t i = 0; i < length; ++i) {
    crc ^= static_cast<unsigned>(at(i)) << 16;
    for (int bit = 0; bit < 8; ++bit) crc = (crc << 1 ^ ((crc & 0x800000) != 0 ? 0x864CFB : 0)) & 0xFFFFFF;
  }
  if (crc != 0) return 0;
  corrections_ = now_ < corrections_end_ ? corrections_ + 1 : 1;
  corrections_end_ = now_ + FromSeconds(kCorrectionsHold);
  return length;
}

void Core::Receive(std::string_view bytes) {
  if (options_.silent) return;
  input_ += bytes;
  while (!input_.empty() && !Booting()) {
    std::size_t frame = TakeCorrections(input_);
    if (frame == 0) frame = TakeFrame(input_);
    if (frame == std::string::npos) return;
    if (frame > 0) {
      input_.erase(0, frame);
      continue;
    }
    const std::size_t end = std::min(input_.find_first_of("\r\n"), kLongestLine);
    if (end >= input_.size()) return;
    const std::string line = input_.substr(0, end);
    input_.erase(0, end + (end < kLongestLine ? 1 : 0));
    if (!line.empty()) TakeLine(line);
  }
  if (Booting()) input_.clear();
}

void Core::TakeLine(std::string_view line) {
  switch (Understand(line)) {
    case Verdict::kDone:
      return;
    case Verdict::kUnknown:
      return Complain(line, "unknown line");
    case Verdict::kBadValue:
      return Complain(line, "bad value");
    case Verdict::kBadChecksum:
      return Complain(line, "bad checksum");
  }
}

// Settings.

void Core::Reboot(const Settings& settings, double seconds) {
  settings_ = settings;
  boot_end_ = now_ + FromSeconds(seconds);
  due_.clear();
}

void Core::PowerCycle() {
  answers_.clear();
  input_.clear();
  Reboot(Settings(saved_), kBootSeconds);
}

bool Core::SetMask(std::string_view text) {
  const auto degrees = Whole(text, 0, 90);
  settings_.elevation_mask = degrees.value_or(settings_.elevation_mask);
  return degrees.has_value();
}

void Core::Switch(std::string_view message, bool on, Nanoseconds interval) {
  if (on) {
    settings_.output[std::string(message)] = interval;
  } else if (const auto it = settings_.output.find(message); it != settings_.output.end()) {
    settings_.output.erase(it);
  }
}

const std::string& Core::Value(std::string_view name) const {
  static const std::string kNone;
  const auto it = settings_.values.find(name);
  return it == settings_.values.end() ? kNone : it->second;
}

void Core::SetValue(std::string_view name, std::string_view value) {
  settings_.values[std::string(name)] = std::string(value);
}

// Output.

std::string Core::Advance(double seconds) {
  const Nanoseconds target = now_ + FromSeconds(seconds);
  std::string out;
  while (!options_.silent) {
    Transmit(out);
    const Nanoseconds due = NextDue(), next = std::min(due, NextFree());
    if (next > target) break;
    now_ = next;
    if (now_ != due) continue;
    // A line too slow for all that it is told to carry falls behind no further than this.
    for (const std::string& late : std::exchange(due_, {})) out += late;
    QueueMessages();
  }
  now_ = target;
  return out;
}

double Core::NextOutputIn() const {
  const Nanoseconds next = options_.silent ? now_ + std::chrono::hours(1) : std::min(NextDue(), NextFree());
  return std::chrono::duration<double>(std::max(next - now_, Nanoseconds(0))).count();
}

Nanoseconds Core::NextDue() const {
  Nanoseconds next = now_ + std::chrono::hours(1);
  for (const auto& [name, interval] : settings_.output) {
    next = std::min(next, now_ - now_ % interval + interval);
  }
  return next;
}

Nanoseconds Core::NextFree() const {
  return answers_.empty() && due_.empty() ? now_ + std::chrono::hours(1) : std::max(now_, line_free_);
}

void Core::Send(std::deque<std::string>& from, std::string& out) {
  const std::string message = std::move(from.front());
  from.pop_front();
  out += message;
  constexpr double kBitsPerByte = 10;
  if (paced_) {
    line_free_ = now_ + FromSeconds(static_cast<double>(message.size()) * kBitsPerByte / baud_);
  }
}

void Core::Transmit(std::string& out) {
  while (line_free_ <= now_ && !(answers_.empty() && due_.empty()))
    Send(answers_.empty() ? due_ : answers_, out);
}

void Core::QueueMessages() {
  if (Booting()) return;
  const Epoch epoch = EpochNow();
  for (const Message& message : messages_) {
    const auto it = settings_.output.find(message.name);
    if (it == settings_.output.end() || now_ % it->second != Nanoseconds(0)) continue;
    if (std::string text = message.write(epoch); !text.empty()) due_.push_back(std::move(text));
  }
}

Epoch Core::EpochNow() const {
  Epoch epoch;
  epoch.seconds = static_cast<double>(now_.count()) * 1e-9;
  epoch.utc = options_.start_utc + std::chrono::round<std::chrono::milliseconds>(now_);
  epoch.truth = world_.TruthAt(epoch.seconds);
  epoch.views = world_.InView(epoch.seconds, settings_.elevation_mask);
  epoch.dilution = DilutionOf(epoch.views);
  epoch.geoid_separation = options_.geoid_separation;
  Adapt(epoch);
  if (now_ < corrections_end_) epoch.quality = corrections_ < kCorrectionsForFixed ? 5 : 4;
  if (UsedCount(epoch.views) < 4) epoch.quality = 0;
  return epoch;
}

}  // namespace simulator
