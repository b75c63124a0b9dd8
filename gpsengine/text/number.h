#pragma once

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

// The two number readers, which the field parser and the report decoders share. Both skip leading white
// space, allow a sign and stop at the first character that does not fit.

/// Reads a whole number in base 10. False if there is none, or if it equals or passes the largest or the
/// smallest 32-bit value. `*pValue` is written only on success.
///@{
bool ParseInt(CString text, int* pValue);
bool ParseInt(std::u16string_view text, int* pValue);
inline bool ParseInt(const WCHAR* pszText, int* pValue) {
  return ParseInt(std::u16string_view(pszText), pValue);
}
///@}

/// Reads a decimal number, with a "." and an optional exponent whatever the locale. False if there is none,
/// with `value` at 0, or if its magnitude is beyond a double, with `value` at ±HUGE_VAL. On success
/// `nRemaining` is the count of characters not taken.
///@{
bool ParseDouble(CString text, double& value, int& nRemaining);
bool ParseDouble(std::u16string_view text, double& value, int& nRemaining);
inline bool ParseDouble(const WCHAR* pszText, double& value, int& nRemaining) {
  return ParseDouble(std::u16string_view(pszText), value, nRemaining);
}
///@}

/// The short way for a plain number of up to 15 digits, with or without a point, within a text that begins at
/// `pStart`: what ParseDouble would read of it. False, with `value` untouched, says nothing about the number,
/// which is then ParseDouble's to read.
bool ParseShortDecimal(std::u16string_view number, const WCHAR* pStart, double& value);

#pragma GCC visibility pop
