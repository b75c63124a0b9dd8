#include "gpsengine/face/answerreader.h"

#include <algorithm>
#include <iterator>

namespace gps {

namespace {

// No answer is longer. What is, is noise.
constexpr std::size_t kLongestLine = 200;
// Shorter ones are a receiver's prompt.
constexpr int kShortestAnswer = 6;

constexpr std::string_view kTaken[] = {"$PASHR,ACK", "$>", "<OK"};
constexpr std::string_view kRefused[] = {"$PASHR,NAK", "<ERROR"};
constexpr std::string_view kAnswered[] = {"$PASHS,",       "$J",           "LOG ",        "UNLOG ",
                                          "SAVECONFIG",    "ECUTOFF ",     "ASSIGN",      "RTKSOURCE",
                                          "PSRDIFFSOURCE", "SBASCONTROL ", "UNDULATION ", "DATUM ",
                                          "datum ",        "USERDATUM "};

template <std::size_t n>
bool BeginsWith(std::string_view line, const std::string_view (&heads)[n]) {
  return std::any_of(std::begin(heads), std::end(heads), [&](auto head) { return line.starts_with(head); });
}

}  // namespace

bool AnswerReader::IsDueTo(std::string_view line) {
  return BeginsWith(line, kAnswered);
}

void AnswerReader::Feed(std::string_view bytes) {
  heard_ = heard_ || !bytes.empty();
  for (const char c : bytes) {
    if (c != '\r' && c != '\n') {
      if (line_.size() < kLongestLine) line_ += c;
      continue;
    }
    EndLine();
    line_.clear();
  }
}

void AnswerReader::EndLine() {
  taken_ += BeginsWith(line_, kTaken) ? 1 : 0;
  if (!BeginsWith(line_, kRefused)) return;
  ++refused_;
  refusal_ = line_;
}

bool IsAnswer(const CString& message) {
  if (message.GetLength() < kShortestAnswer) return false;
  if (!message.StartsWith("$>") && !message.StartsWith("#") && !message.StartsWith("$RD")) return false;
  const auto is_text = [](char16_t c) { return (c >= u' ' && c <= u'~') || c == u'\r' || c == u'\n'; };
  return std::ranges::all_of(message.View(), is_text);
}

}  // namespace gps
