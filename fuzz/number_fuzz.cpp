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

// What stands behind the white space, up to the first character that no number has, so that the C library is
// shown no hexadecimal number and no word for one.
std::string Head(std::u16string_view text, const char16_t* pszCharacters, std::size_t& nStart) {
  nStart = std::min(text.find_first_not_of(u" \t\n\v\f\r"), text.size());
  const auto head = text.substr(nStart, text.find_first_not_of(pszCharacters, nStart) - nStart);
  return std::string(head.begin(), head.end());
}

void CheckInt(std::u16string_view text) {
  std::size_t start = 0;
  const std::string head = Head(text, u"0123456789+-", start);
  char* end = nullptr;
  const long long expected = std::strtoll(head.c_str(), &end, 10);
  const bool good = end != head.c_str() && expected < INT_MAX && expected > INT_MIN;

  int value = 4711;
  Require(ParseInt(text, &value) == good, "a whole number is read or refused");
  Require(value == (good ? expected : 4711), "a whole number has its value");
}

void CheckDouble(std::u16string_view text) {
  std::size_t start = 0;
  const std::string head = Head(text, u"0123456789+-.eE", start);
  char* end = nullptr;
  const double expected = std::strtod(head.c_str(), &end);
  const bool good = end != head.c_str() && std::fabs(expected) != HUGE_VAL;

  double value = 4711.0;
  int remaining = -1;
  Require(ParseDouble(text, value, remaining) == good, "a decimal number is read or refused");
  Require(std::memcmp(&value, &expected, sizeof value) == 0,
          "a decimal number has its value to the last bit");
  const auto rest = static_cast<int>(text.size() - start) - static_cast<int>(end - head.c_str());
  Require(remaining == (good ? rest : -1), "the rest is counted");
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
