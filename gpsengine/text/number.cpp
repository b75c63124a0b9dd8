#include "gpsengine/text/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
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
bool IsOfNumber(WCHAR c) {
  return IsDigit(c) || c == u'.' || c == u'e' || c == u'E' || c == u'-' || c == u'+';
}

// Takes the white space and the sign at the head of a text that is not empty. Whether it was a minus.
bool TakeSign(std::u16string_view& text) {
  if (IsDigit(text.front())) return false;
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  const bool negative = text.starts_with(u'-');
  if (negative || text.starts_with(u'+')) text.remove_prefix(1);
  return negative;
}

// Of a number beyond a double: whether it is too large, and not too small.
bool IsTooLarge(const std::string& number) {
  const auto e = std::min(number.find_first_of("eE"), number.size());
  const auto point = std::min(number.find('.'), e);
  const long digits = static_cast<long>(point) - static_cast<long>(number.find_first_not_of("0."));
  const long exponent = e < number.size() ? std::strtol(&number[e + 1], nullptr, 10) : 0;
  return exponent > -digits;
}

}  // namespace

bool ParseInt(std::u16string_view text, int* result) {
  if (text.empty()) return false;
  const bool negative = TakeSign(text);
  if (text.empty() || !IsDigit(text.front())) return false;
  std::int64_t value = 0;
  for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
    value = value * 10 + (text.front() - u'0');
    if (value >= std::numeric_limits<int>::max() + std::int64_t{negative}) return false;
  }
  *result = static_cast<int>(negative ? -value : value);
  return true;
}

bool ParseDouble(std::u16string_view text, double& value, int& remaining) {
  value = 0.0;
  if (text.empty()) return false;
  const bool negative = TakeSign(text);
  if (text.empty() || !(IsDigit(text.front()) || text.front() == u'.')) return false;  // or a word, or a sign
  const std::string bytes(text.begin(), std::find_if_not(text.begin(), text.end(), IsOfNumber));
  const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), value);
  if (error == std::errc::invalid_argument) return false;
  if (error == std::errc::result_out_of_range) value = IsTooLarge(bytes) ? HUGE_VAL : 0.0;
  if (negative) value = -value;
  if (std::fabs(value) == HUGE_VAL) return false;
  remaining = static_cast<int>(text.size()) - static_cast<int>(end - bytes.data());
  return true;
}

bool ParseShortDecimal(std::u16string_view number, const WCHAR* start, double& value) {
  std::uint64_t digits = 0;
  int fraction = 0;
  if (!textscan::ReadShortDecimal(number, start, digits, fraction)) return false;
  value = textscan::ToDouble(digits, fraction);
  return true;
}

bool ParseInt(CString text, int* result) {
  return ParseInt(text.View(), result);
}

bool ParseDouble(CString text, double& value, int& remaining) {
  return ParseDouble(text.View(), value, remaining);
}
