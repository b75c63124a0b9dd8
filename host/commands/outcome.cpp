#include "host/commands/outcome.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "gpsengine/text/words.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

// Seconds to listen after a command: for any byte, for an answer that is due, and for a last word.
constexpr double kForBytes = 5.0, kForAnswer = 1.5, kForLastWord = 0.3;
// No answer is longer. What is, is noise.
constexpr std::size_t kLongestLine = 200;
// Up to this many lines are told one by one.
constexpr std::size_t kFewLines = 3;

// How languages answer, and how the lines begin that get such answers. The others say nothing.
constexpr std::string_view kTaken[] = {"$PASHR,ACK", "$>", "<OK"};
constexpr std::string_view kRefused[] = {"$PASHR,NAK", "<ERROR"};
constexpr std::string_view kAnswered[] = {"$PASHS,", "$J", "LOG ", "UNLOG ", "SAVECONFIG"};
constexpr char kBinaryMessage[] = "a binary message";

template <std::size_t n>
bool BeginsWith(std::string_view line, const std::string_view (&heads)[n]) {
  return std::any_of(std::begin(heads), std::end(heads), [&](auto head) { return line.starts_with(head); });
}

bool IsText(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return (c >= ' ' && c <= '~') || c == '\r' || c == '\n'; });
}

/// What is written, for people.
std::string Shown(const std::string& bytes) {
  return IsText(bytes) ? bytes.substr(0, bytes.find_last_not_of("\r\n") + 1) : kBinaryMessage;
}

/// The lines that the steps write.
std::vector<std::string> Lines(const std::vector<CRehearsal::Step>& steps) {
  std::vector<std::string> lines;
  for (const auto& step : steps) {
    if (step.kind == CRehearsal::StepKind::write) lines.push_back(Shown(step.bytes));
  }
  return lines;
}

std::string Told(const std::vector<std::string>& lines) {
  const auto quoted = [](const std::string& line) {
    return line == kBinaryMessage ? line : '"' + line + '"';
  };
  if (lines.size() > kFewLines)
    return std::to_string(lines.size()) + " messages, " + quoted(lines.front()) + " to " +
           quoted(lines.back());
  std::vector<std::string> all;
  std::transform(lines.begin(), lines.end(), std::back_inserter(all), quoted);
  return Join(all);
}

}  // namespace

std::string RateDoubt(int baud) {
  if (baud == 0) return ", and the line's baud rate right where it is set?";
  return ", at " + std::to_string(baud) + " baud? --baud auto tries others";
}

Outcome::Outcome(Transcript transcript) : transcript_(std::move(transcript)) {}

void Outcome::Feed(std::string_view bytes) {
  heard_ = heard_ || !bytes.empty();
  for (const char c : bytes) {
    if (c != '\r' && c != '\n') {
      if (line_.size() < kLongestLine) line_ += c;
      continue;
    }
    OnLine();
    line_.clear();
  }
}

void Outcome::OnLine() {
  taken_ += BeginsWith(line_, kTaken) ? 1 : 0;
  if (!BeginsWith(line_, kRefused)) return;
  ++refused_;
  refusal_ = line_;
}

bool Outcome::IsAwaited() const {
  const auto lines = Lines(transcript_.steps);
  return std::any_of(lines.begin(), lines.end(),
                     [](const std::string& line) { return BeginsWith(line, kAnswered); });
}

double Outcome::Patience(bool understood) const {
  if (!heard_) return kForBytes;
  if (taken_ + refused_ > 0) return kForLastWord;
  return IsAwaited() || !understood ? kForAnswer : kForLastWord;
}

std::string Outcome::Tell(const Line& line) const {
  const auto lines = Lines(transcript_.steps);
  if (lines.empty()) return "nothing was sent: the model " + line.model + " has nothing to send here";
  const std::string sent = "sent " + Told(lines);
  const std::string data = sent + "; data came from " + line.device + ", but ";
  const std::string doubt = ": is it the model " + line.model + RateDoubt(line.baud);
  const std::string further = line.reports > 0 ? "; its reports are shown" : "";
  const auto fail = [](const std::string& text) { return Failure(ExitCode::refused, text); };
  if (!heard_) {
    throw fail(sent + ", but no bytes came from " + line.device +
               ": check that the receiver is on, and its cable");
  }
  if (refused_ > 0 && taken_ == 0) throw fail(sent + ", which the receiver refused: " + refusal_);
  if (refused_ > 0) {
    return sent + "; the receiver took " + std::to_string(taken_) + " and refused " +
           std::to_string(refused_) + ", the last one with " + refusal_ + further;
  }
  if (taken_ > 0) return sent + "; the receiver acknowledged" + further;
  if (line.reports > 0) return sent + further;
  if (!line.understood) throw fail(data + "no message was understood" + doubt);
  if (IsAwaited()) throw fail(data + "no answer, which the model " + line.model + " gives" + doubt);
  return data + "no answer: this make gives none to such commands";
}

std::string Outcome::TellInterrupted(const std::string& operation, const Transcript& sent) const {
  auto left = Lines(transcript_.steps);
  for (const std::string& line : Lines(sent.steps)) {
    const auto found = std::find(left.begin(), left.end(), line);
    if (found != left.end()) left.erase(found);
  }
  if (left.empty()) return "interrupted when all of " + operation + " had been sent";
  return "interrupted: of " + operation + " the receiver has not been sent " + Told(left) +
         ". Give the command again and let it end";
}

}  // namespace host
