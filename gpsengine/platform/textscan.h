#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "gpsengine/platform/types.h"

// Passes over short texts, sixteen characters a step. Every sentence goes through each of these once, so that
// they make up a good part of the time that a sentence takes.

namespace textscan {

/// Characters that MatchBits looks at.
constexpr int kBlock = 64;

/// One bit a character of `text`, of which at most kBlock count, from the lowest bit up: set where it is `a`
/// or `b`.
std::uint64_t MatchBits(std::u16string_view text, WCHAR a, WCHAR b);
/// The same of bytes, and of one of them.
std::uint64_t MatchBits(std::string_view bytes, char c);

/// Whether `c` occurs in `text`.
bool Contains(std::u16string_view text, WCHAR c);

/// Index of the first `end` in `text`, or -1. `sum` becomes the exclusive or of the characters before it.
int SumUpTo(std::u16string_view text, WCHAR end, unsigned& sum);

/// Widens `count` bytes, without a sign. Gives how many of them stand before the first zero byte.
int WidenText(const char* bytes, int count, WCHAR* to);

/// Makes bytes of characters. False, with anything in `to`, if one does not fit into a byte.
bool Narrow(std::u16string_view text, char* to);

/// The first `c` of some bytes, or null.
const char* Find(const char* bytes, const char* end, char c);

/// The first of some bytes that is one of three, or null.
const char* FindAny(const char* bytes, const char* end, char a, char b, char c);

/// Reads a number of one to four digits and nothing else. False, with `value` untouched, for anything else;
/// also, now and then, for such a number at the very end of a text, which the caller then reads in its own
/// way. `end` is where the text ends that the number is a part of.
bool ReadShortNumber(std::u16string_view number, const WCHAR* end, int& value);

/// Reads a number of up to 15 digits, with at most one point among them, and nothing else: its digits as one
/// whole number, and how many of them stand after the point. False, with both untouched, for anything else.
/// `start` is where the text begins that the number is a part of.
bool ReadShortDecimal(std::u16string_view number, const WCHAR* start, std::uint64_t& digits, int& fraction);

/// The same of wide or of narrow text, one character a step.
template <class View>
bool ReadPlainDecimal(View number, std::uint64_t& digits, int& fraction) {
  constexpr std::size_t kMost = 15;
  if (number.size() > kMost + 1) return false;
  std::uint64_t all = 0;
  std::size_t count = 0, whole = kMost + 1;
  for (const auto c : number) {
    if (const auto digit = static_cast<unsigned>(c - '0'); digit < 10) {
      all = all * 10 + digit;
      ++count;
    } else if (c == '.' && whole > kMost) {
      whole = count;
    } else {
      return false;
    }
  }
  if (count == 0 || count > kMost) return false;
  digits = all;
  fraction = static_cast<int>(count - std::min(whole, count));
  return true;
}

/// The number that either has read. The digits and their power of ten are exact in a double, so that it is
/// the nearest one to their ratio.
inline double ToDouble(std::uint64_t digits, int fraction) {
  static constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  return static_cast<double>(static_cast<std::int64_t>(digits)) / kPowersOfTen[fraction];
}

}  // namespace textscan
