#include "gpsengine/text/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "gpsengine/platform/textscan.h"

namespace {

bool IsSpace(WCHAR c) {
  return c == u' ' || (c >= u'\t' && c <= u'\r');
}
bool IsDigit(WCHAR c) {
  return c >= u'0' && c <= u'9';
}

void SkipSpace(std::u16string_view& text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
}

bool TakeSign(std::u16string_view& text) {
  if (text.empty() || (text.front() != u'-' && text.front() != u'+')) return false;
  const bool negative = text.front() == u'-';
  text.remove_prefix(1);
  return negative;
}

// The digits at the head of a text are taken into `digits`, as far as 64 bits hold them; gives their count.
int TakeDigits(std::u16string_view& text, std::uint64_t& digits) {
  const WCHAR* const start = text.data();
  const WCHAR* const end = start + text.size();
  const WCHAR* p = start;
  for (; p != end && IsDigit(*p); ++p) digits = digits * 10 + (*p - u'0');
  text.remove_prefix(static_cast<std::size_t>(p - start));
  return static_cast<int>(p - start);
}

// The exponent after a mantissa; nothing is taken if "e" is not followed by a number.
int TakeExponent(std::u16string_view& text) {
  if (text.empty() || (text.front() != u'e' && text.front() != u'E')) return 0;
  std::u16string_view rest = text.substr(1);
  const bool negative = TakeSign(rest);
  if (rest.empty() || !IsDigit(rest.front())) return 0;
  int exponent = 0;
  for (; !rest.empty() && IsDigit(rest.front()); rest.remove_prefix(1)) {
    if (exponent < 100000) exponent = exponent * 10 + (rest.front() - u'0');
  }
  text = rest;
  return negative ? -exponent : exponent;
}

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kLargestPower = 22;
constexpr int kHeldDigits = 19;                           // that 64 bits hold
constexpr std::uint64_t kExact = std::uint64_t{1} << 53;  // a double holds every whole number up to here

// The value of a number that is too long, or too large or small, for the short way.
double ReadSlowly(std::u16string_view number, int exponent) {
  const std::string bytes(number.begin(), number.end());
  double value = 0.0;
  const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), value);
  if (error != std::errc::result_out_of_range) return value;
  // Too large or too small: the place of the first digit that is not zero tells which.
  const auto first = number.find_first_of(u"123456789");
  const auto point = std::min(number.find(u'.'), number.find_first_of(u"eE"));
  const auto whole = static_cast<int>(std::min(point, number.size()));
  const int magnitude = whole - static_cast<int>(std::min(first, number.size())) + exponent;
  return magnitude > 0 ? HUGE_VAL : 0.0;
}

}  // namespace

bool ParseInt(std::u16string_view text, int* result) {
  constexpr std::ptrdiff_t kSafeDigits = 9;  // no overflow up to here
  bool negative = false;
  if (!text.empty() && !IsDigit(text.front())) {
    SkipSpace(text);
    negative = TakeSign(text);
  }
  const WCHAR* p = text.data();
  const WCHAR* const end = p + text.size();
  const WCHAR* const safe_end = p + std::min(end - p, kSafeDigits);
  if (p == end || !IsDigit(*p)) return false;
  std::int64_t value = 0;
  for (; p != safe_end && IsDigit(*p); ++p) value = value * 10 + (*p - u'0');
  for (; p != end && IsDigit(*p); ++p) {
    value = value * 10 + (*p - u'0');
    if (value >= std::numeric_limits<int>::max() + std::int64_t{negative}) return false;
  }
  *result = static_cast<int>(negative ? -value : value);
  return true;
}

bool ParseDouble(std::u16string_view text, double& value, int& remaining) {
  bool negative = false;
  if (!text.empty() && !IsDigit(text.front())) {
    SkipSpace(text);
    negative = TakeSign(text);
  }
  const std::u16string_view number = text;
  std::uint64_t digits = 0;
  int count = TakeDigits(text, digits);
  int fraction = 0;
  if (!text.empty() && text.front() == u'.') {
    std::u16string_view behind = text.substr(1);
    fraction = TakeDigits(behind, digits);
    count += fraction;
    if (count > 0) text = behind;
  }
  if (count == 0) {
    value = 0.0;
    return false;
  }
  const int exponent = TakeExponent(text);

  // Digits and power are both exact in a double, so that one operation rounds once, and correctly.
  const int power = exponent - fraction;
  if (count <= kHeldDigits && digits <= kExact && power >= -kLargestPower && power <= kLargestPower) {
    const auto mantissa = static_cast<double>(digits);
    value = power < 0 ? mantissa / kPowersOfTen[-power] : mantissa * kPowersOfTen[power];
  } else {
    value = ReadSlowly(number.substr(0, number.size() - text.size()), exponent);
  }
  if (negative) value = -value;
  if (std::fabs(value) == HUGE_VAL) return false;
  remaining = static_cast<int>(text.size());
  return true;
}

bool ParseShortDecimal(std::u16string_view number, const WCHAR* start, double& value) {
  std::uint64_t digits = 0;
  int fraction = 0;
  if (!textscan::ReadShortDecimal(number, start, digits, fraction)) return false;
  // Both are exact in a double, as in the long way.
  value = static_cast<double>(static_cast<std::int64_t>(digits)) / kPowersOfTen[fraction];
  return true;
}

bool ParseInt(CString text, int* result) {
  return ParseInt(text.View(), result);
}

bool ParseDouble(CString text, double& value, int& remaining) {
  return ParseDouble(text.View(), value, remaining);
}
