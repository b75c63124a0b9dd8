#include "gpsengine/sentences/sentencefinder.h"

#include <algorithm>
#include <iterator>

namespace gps {

namespace {

// Longer than a sentence of any make. What is longer is noise.
constexpr std::size_t kLongest = 512;

}  // namespace

bool IsParameterLine(std::string_view text) {
  constexpr std::string_view kHeads[] = {"PMD:", "PER:", "PEM:", "PRTA:"};
  return std::any_of(std::begin(kHeads), std::end(kHeads), [&](auto head) { return text.starts_with(head); });
}

// True when `c` has ended a text to be taken, which is gone at the next byte.
bool SentenceFinder::Next(char c) {
  if (text_.ends_with('\n')) text_.clear();
  if (c == '$' || (c == '!' && !IsSentence())) {
    text_ = c;
  } else if (c == '\r' || c == '\n') {
    if (IsSentence() || IsParameterLine(text_)) {
      text_ += "\r\n";
      return true;
    }
    text_.clear();
  } else if (c < ' ' || c > '~' || text_.size() >= kLongest) {
    text_.clear();
  } else {
    text_ += c;
  }
  return false;
}

}  // namespace gps
