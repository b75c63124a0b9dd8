#include "gpsengine/platform/textscan.h"

#include <bit>
#include <cstring>

#include "gpsengine/platform/plainscan.h"

namespace textscan {

// All four digits at once, without a branch on how many there are: numbers of one to three digits follow each
// other in a satellite sentence, and no processor can foresee their lengths.
bool ReadShortNumber(std::u16string_view number, const WCHAR* end, int& value) {
  if constexpr (std::endian::native != std::endian::little) return false;
  constexpr std::size_t kDigits = 4;
  const std::size_t length = number.size();
  if (length - 1 >= kDigits || end - number.data() < static_cast<std::ptrdiff_t>(kDigits)) return false;
  std::uint64_t lanes;
  std::memcpy(&lanes, number.data(), sizeof lanes);
  // The last digit into the uppermost lane; what stands after the number is shifted out.
  lanes = (lanes ^ 0x0030003000300030) << (16 * (kDigits - length));
  constexpr std::uint64_t kAboveNine = 0x7FF67FF67FF67FF6;  // carries a lane above 9 into its top bit
  if (((lanes + kAboveNine) & 0x8000800080008000) != 0 || (lanes & 0x8000800080008000) != 0) return false;
  constexpr std::uint64_t kWeights = 1 | 10ULL << 16 | 100ULL << 32 | 1000ULL << 48;
  value = static_cast<int>(lanes * kWeights >> 48);
  return true;
}

#ifndef __SSE2__

bool ReadShortDecimal(std::u16string_view number, const WCHAR*, std::uint64_t& digits, int& fraction) {
  return plain::ReadShortDecimal(number, digits, fraction);
}

std::uint64_t MatchBits(std::u16string_view text, WCHAR a, WCHAR b) {
  return plain::MatchBits(text, a, b);
}

std::uint64_t MatchBits(std::string_view bytes, char c) {
  return plain::MatchBits(bytes, c);
}

bool Contains(std::u16string_view text, WCHAR c) {
  return plain::Contains(text, c);
}

int SumUpTo(std::u16string_view text, WCHAR end, unsigned& sum) {
  return plain::SumUpTo(text, end, sum);
}

void Widen(const char* bytes, int count, WCHAR* to) {
  plain::Widen(bytes, count, to);
}

int WidenText(const char* bytes, int count, WCHAR* to) {
  Widen(bytes, count, to);
  return plain::LengthOf(bytes, count);
}

bool Narrow(std::u16string_view text, char* to) {
  return plain::Narrow(text, to);
}

const char* FindNear(const char* bytes, const char* end, char c) {
  return plain::Find(bytes, end, c);
}

const char* FindAny(const char* bytes, const char* end, char a, char b, char c) {
  return plain::FindAny(bytes, end, a, b, c);
}

#endif

}  // namespace textscan
