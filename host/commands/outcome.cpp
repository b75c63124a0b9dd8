#include "host/commands/outcome.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "gpsengine/face/words.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

// Seconds to listen after a command: for any byte, and for a last word.
constexpr double kForBytes = 5.0, kForLastWord = 0.3;
// Up to this many lines are told one by one.
constexpr std::size_t kFewLines = 3;

constexpr char kBinaryMessage[] = "a binary message";

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

bool Outcome::IsAwaited() const {
  const auto lines = Lines(transcript_.steps);
  return std::any_of(lines.begin(), lines.end(), &AnswerReader::IsDueTo);
}

double Outcome::Patience(bool understood) const {
  if (!answers_.HasHeard()) return kForBytes;
  if (answers_.Taken() + answers_.Refused() > 0) return kForLastWord;
  return IsAwaited() || !understood ? AnswerReader::kForWord : kForLastWord;
}

std::string Outcome::Tell(const Line& line) const {
  const auto lines = Lines(transcript_.steps);
  if (lines.empty()) return "nothing was sent: the model " + line.model + " has nothing to send here";
  const std::string sent = "sent " + Told(lines);
  const std::string data = sent + "; data came from " + line.device + ", but ";
  const std::string doubt = ": is it the model " + line.model + RateDoubt(line.baud);
  const std::string further = line.reports > 0 ? "; its reports are shown" : "";
  const auto fail = [](const std::string& text) { return Failure(ExitCode::refused, text); };
  if (!answers_.HasHeard()) {
    throw fail(sent + ", but no bytes came from " + line.device +
               ": check that the receiver is on, and its cable");
  }
  if (answers_.Refused() > 0 && answers_.Taken() == 0)
    throw fail(sent + ", which the receiver refused: " + answers_.Refusal());
  if (answers_.Refused() > 0) {
    return sent + "; the receiver took " + std::to_string(answers_.Taken()) + " and refused " +
           std::to_string(answers_.Refused()) + ", the last one with " + answers_.Refusal() + further;
  }
  if (answers_.Taken() > 0) return sent + "; the receiver acknowledged" + further;
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
