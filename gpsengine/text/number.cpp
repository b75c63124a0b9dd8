#include "gpsengine/text/number.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

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

// A decimal number taken apart: digits × 10^exponent, as far as 64 bits hold the digits.
struct Decimal {
  std::uint64_t nDigits = 0;
  int nDigitCount = 0;  // without leading zeros
  int nExponent = 0;
  bool bAny = false;

  void TakeDigits(std::u16string_view& text, bool fraction) {
    for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
      bAny = true;
      if (fraction) --nExponent;
      if (nDigitCount == 0 && text.front() == u'0') continue;
      if (++nDigitCount <= 19) nDigits = nDigits * 10 + (text.front() - u'0');
    }
  }
};

// The exponent behind a mantissa; nothing is taken if "e" is not followed by a number.
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
constexpr int kExactDigits = 15;

// The value of a number that is too long, or too large or small, for the short way.
double ReadSlowly(std::u16string_view number, const Decimal& decimal) {
  const std::string bytes(number.begin(), number.end());
  double value = 0.0;
  const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), value);
  if (error != std::errc::result_out_of_range) return value;
  return decimal.nDigitCount + decimal.nExponent > 0 ? HUGE_VAL : 0.0;
}

}  // namespace

bool ParseInt(std::u16string_view text, int* pValue) {
  SkipSpace(text);
  const bool negative = TakeSign(text);
  if (text.empty() || !IsDigit(text.front())) return false;
  std::int64_t value = 0;
  for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
    value = value * 10 + (text.front() - u'0');
    if (value > std::numeric_limits<int>::max()) return false;
  }
  if (negative) value = -value;
  if (value == std::numeric_limits<int>::max()) return false;
  *pValue = static_cast<int>(value);
  return true;
}

bool ParseDouble(std::u16string_view text, double& value, int& nRemaining) {
  SkipSpace(text);
  const bool negative = TakeSign(text);
  const std::u16string_view number = text;
  Decimal decimal;
  decimal.TakeDigits(text, false);
  if (!text.empty() && text.front() == u'.') {
    std::u16string_view behind = text.substr(1);
    decimal.TakeDigits(behind, true);
    if (decimal.bAny) text = behind;
  }
  if (!decimal.bAny) {
    value = 0.0;
    return false;
  }
  decimal.nExponent += TakeExponent(text);

  // Digits and power are both exact in a double, so that one operation rounds once, and correctly.
  const int power = decimal.nExponent;
  if (decimal.nDigitCount <= kExactDigits && power >= -kLargestPower && power <= kLargestPower) {
    const auto digits = static_cast<double>(decimal.nDigits);
    value = power < 0 ? digits / kPowersOfTen[-power] : digits * kPowersOfTen[power];
  } else {
    value = ReadSlowly(number.substr(0, number.size() - text.size()), decimal);
  }
  if (negative) value = -value;
  if (std::fabs(value) == HUGE_VAL) return false;
  nRemaining = static_cast<int>(text.size());
  return true;
}

bool ParseInt(CString text, int* pValue) {
  return ParseInt(text.View(), pValue);
}

bool ParseDouble(CString text, double& value, int& nRemaining) {
  return ParseDouble(text.View(), value, nRemaining);
}
