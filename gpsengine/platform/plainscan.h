#pragma once

#include <algorithm>
#include <cstring>

#include "gpsengine/platform/textscan.h"

// The scans of texts one character a step, for processors without others and for texts that are too short for
// those.

namespace textscan::plain {

inline std::uint64_t MatchBits(std::u16string_view text, WCHAR a, WCHAR b) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < std::min<std::size_t>(text.size(), kBlock); ++i)
    bits |= static_cast<std::uint64_t>(text[i] == a || text[i] == b) << i;
  return bits;
}

inline std::uint64_t MatchBits(std::string_view bytes, char c) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < std::min<std::size_t>(bytes.size(), kBlock); ++i)
    bits |= static_cast<std::uint64_t>(bytes[i] == c) << i;
  return bits;
}

inline bool Contains(std::u16string_view text, WCHAR c) {
  return text.find(c) != text.npos;
}

inline int SumUpTo(std::u16string_view text, WCHAR end, unsigned& sum) {
  sum = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == end) return static_cast<int>(i);
    sum ^= text[i];
  }
  return -1;
}

inline void Widen(const char* bytes, int count, WCHAR* to) {
  for (int i = 0; i < count; ++i) to[i] = static_cast<unsigned char>(bytes[i]);
}

/// How many bytes stand before the first zero.
inline int LengthOf(const char* bytes, int count) {
  const void* const zero = std::memchr(bytes, 0, static_cast<std::size_t>(count));
  return zero == nullptr ? count : static_cast<int>(static_cast<const char*>(zero) - bytes);
}

inline bool Narrow(std::u16string_view text, char* to) {
  WCHAR all = 0;
  for (const WCHAR c : text) {
    all |= c;
    *to++ = static_cast<char>(c);
  }
  return all <= 0xFF;
}

inline const char* Find(const char* bytes, const char* end, char c) {
  return static_cast<const char*>(std::memchr(bytes, c, static_cast<std::size_t>(end - bytes)));
}

inline const char* FindAny(const char* bytes, const char* end, char a, char b, char c) {
  const char* found =
      std::find_if(bytes, end, [=](char each) { return each == a || each == b || each == c; });
  return found == end ? nullptr : found;
}

/// As `textscan::ReadShortDecimal`, of wide or of narrow text, in up to 16 characters.
template <class View>
bool ReadShortDecimal(View number, std::uint64_t& digits, int& fraction) {
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

}  // namespace textscan::plain
