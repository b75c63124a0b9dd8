// The two number readers against the C library's, which read the same numbers where the text is plainly
// decimal.
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/support.h"
#include "gpsengine/text/number.h"

namespace {

// What the C library would take from the head of a text, if it knew decimal numbers alone.
struct Plain {
  std::string text;       // without white space, up to the end of the number
  std::size_t nEnd = 0;   // of the number in the whole text
  bool bWhole = false;    // there is a whole number
  bool bDecimal = false;  // there is a decimal one
};

bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

std::size_t SkipDigits(std::u16string_view text, std::size_t at) {
  while (at < text.size() && IsDigit(text[at])) ++at;
  return at;
}

std::size_t Start(std::u16string_view text) {
  const auto start = text.find_first_not_of(u" \t\n\v\f\r");
  return start == text.npos ? text.size() : start;
}

std::size_t SkipSign(std::u16string_view text, std::size_t at) {
  return at < text.size() && (text[at] == u'+' || text[at] == u'-') ? at + 1 : at;
}

std::string Narrow(std::u16string_view text) {
  return std::string(text.begin(), text.end());
}

void CheckInt(std::u16string_view text) {
  const std::size_t start = Start(text);
  const std::size_t digits = SkipSign(text, start);
  const std::size_t end = SkipDigits(text, digits);
  const long long expected = std::strtoll(Narrow(text.substr(start, end - start)).c_str(), nullptr, 10);
  const bool good = end > digits && expected < INT_MAX && expected > INT_MIN;

  int value = 4711;
  Require(ParseInt(text, &value) == good, "a whole number is read or refused");
  Require(value == (good ? expected : 4711), "a whole number has its value");
}

void CheckDouble(std::u16string_view text) {
  const std::size_t start = Start(text);
  const std::size_t digits = SkipSign(text, start);
  std::size_t end = SkipDigits(text, digits);
  bool any = end > digits;
  if (end < text.size() && text[end] == u'.') {
    const std::size_t fraction = SkipDigits(text, end + 1);
    any = any || fraction > end + 1;
    if (any) end = fraction;
  }
  if (any && end < text.size() && (text[end] == u'e' || text[end] == u'E')) {
    const std::size_t exponent = SkipSign(text, end + 1);
    const std::size_t behind = SkipDigits(text, exponent);
    if (behind > exponent) end = behind;
  }
  const double expected = any ? std::strtod(Narrow(text.substr(start, end - start)).c_str(), nullptr) : 0.0;
  const bool good = any && std::fabs(expected) != HUGE_VAL;

  double value = 4711.0;
  int remaining = -1;
  Require(ParseDouble(text, value, remaining) == good, "a decimal number is read or refused");
  Require(std::memcmp(&value, &expected, sizeof value) == 0,
          "a decimal number has its value to the last bit");
  Require(remaining == (good ? static_cast<int>(text.size() - end) : -1), "the rest is counted");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Input input(pData, nSize);
  const bool wide = input.Byte() == 0xFF;
  const CString text = TextOf(input.Rest(), wide);
  CheckInt(text.View());
  CheckDouble(text.View());
  return 0;
}
