#pragma once

#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace gps {

/// Finds what is text in a receiver's bytes: sentences, which begin with "$" or "!", and the lines of a
/// parameter report, "PMD:", "PER:", "PEM:" and "PRTA:". Those have no "$", so that the framing of messages
/// passes over them: a host that has asked for them hands them to CGPSReceiver::Parse by itself.
class SentenceFinder {
 public:
  /// The next bytes, in pieces of any size; calls `take(std::string_view)` for each sentence and line, which
  /// ends in CR LF.
  template <class Take>
  void Feed(std::string_view bytes, Take&& take) {
    for (const char c : bytes) {
      if (Next(c)) take(std::string_view(text_));
    }
  }

 private:
  bool IsSentence() const { return !text_.empty() && (text_.front() == '$' || text_.front() == '!'); }
  bool Next(char c);

  std::string text_;  // as far as it has come; or whole
};

/// Whether what a SentenceFinder gives is a line of a parameter report.
bool IsParameterLine(std::string_view text);

}  // namespace gps

#pragma GCC visibility pop
