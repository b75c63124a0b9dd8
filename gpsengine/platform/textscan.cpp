#include "gpsengine/platform/textscan.h"

#include <algorithm>
#include <bit>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace textscan {

#ifdef __SSE2__

namespace {

constexpr int kStep = 8;  // characters of a register

__m128i Load(const WCHAR* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

__m128i All(WCHAR c) {
  return _mm_set1_epi16(static_cast<short>(c));
}

// A bit a character of a comparison.
unsigned Bits(__m128i hits) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(hits, _mm_setzero_si128())));
}

unsigned FoldXor(__m128i sums) {
  sums = _mm_xor_si128(sums, _mm_srli_si128(sums, 8));
  sums = _mm_xor_si128(sums, _mm_srli_si128(sums, 4));
  sums = _mm_xor_si128(sums, _mm_srli_si128(sums, 2));
  return static_cast<unsigned>(_mm_extract_epi16(sums, 0));
}

}  // namespace

// A rest that fills no register is covered by a last step that reaches back over what has been looked at.

std::uint64_t MatchBits(std::u16string_view text, WCHAR a, WCHAR b) {
  const int length = static_cast<int>(std::min<std::size_t>(text.size(), kBlock));
  const WCHAR* p = text.data();
  const __m128i allA = All(a);
  const __m128i allB = All(b);
  const auto bitsAt = [&](int i) {
    const __m128i characters = Load(p + i);
    const __m128i hits = _mm_or_si128(_mm_cmpeq_epi16(characters, allA), _mm_cmpeq_epi16(characters, allB));
    return static_cast<std::uint64_t>(Bits(hits)) << i;
  };
  std::uint64_t bits = 0;
  if (length < kStep) {
    for (int i = 0; i < length; ++i) bits |= static_cast<std::uint64_t>(p[i] == a || p[i] == b) << i;
    return bits;
  }
  int i = 0;
  for (; i + kStep <= length; i += kStep) bits |= bitsAt(i);
  return bits | bitsAt(length - kStep);
}

bool Contains(std::u16string_view text, WCHAR c) {
  const int length = static_cast<int>(text.size());
  const WCHAR* p = text.data();
  if (length < kStep) return text.find(c) != std::u16string_view::npos;
  const __m128i all = All(c);
  __m128i hits = _mm_cmpeq_epi16(Load(p + length - kStep), all);
  for (int i = 0; i + kStep <= length; i += kStep)
    hits = _mm_or_si128(hits, _mm_cmpeq_epi16(Load(p + i), all));
  return _mm_movemask_epi8(hits) != 0;
}

int SumUpTo(std::u16string_view text, WCHAR end, unsigned& sum) {
  const int length = static_cast<int>(text.size());
  const WCHAR* p = text.data();
  const __m128i all = All(end);
  __m128i sums = _mm_setzero_si128();
  int i = 0;
  int stop = length;
  for (; i + kStep <= length; i += kStep) {
    const __m128i characters = Load(p + i);
    if (const unsigned bits = Bits(_mm_cmpeq_epi16(characters, all)); bits != 0) {
      stop = i + std::countr_zero(bits);
      break;
    }
    sums = _mm_xor_si128(sums, characters);
  }
  sum = FoldXor(sums);
  for (; i < stop; ++i) {
    if (p[i] == end) return i;
    sum ^= p[i];
  }
  return stop < length ? stop : -1;
}

void Widen(const char* pBytes, int nCount, WCHAR* pTo) {
  constexpr int kBytes = 16;
  const auto step = [&](int i) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pBytes + i));
    const __m128i zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pTo + i), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pTo + i + kStep), _mm_unpackhi_epi8(bytes, zero));
  };
  if (nCount < kBytes) {
    for (int i = 0; i < nCount; ++i) pTo[i] = static_cast<unsigned char>(pBytes[i]);
    return;
  }
  for (int i = 0; i + kBytes <= nCount; i += kBytes) step(i);
  step(nCount - kBytes);
}

// All four digits at once, without a branch on how many there are: numbers of one to three digits follow each
// other in a satellite sentence, and no processor can foresee their lengths.
bool ReadShortNumber(std::u16string_view number, const WCHAR* pEnd, int& value) {
  constexpr std::size_t kDigits = 4;
  const std::size_t length = number.size();
  if (length - 1 >= kDigits || pEnd - number.data() < static_cast<std::ptrdiff_t>(kDigits)) return false;
  std::uint64_t lanes = 0;
  std::memcpy(&lanes, number.data(), sizeof lanes);
  // The last digit into the uppermost lane; what stands behind the number is shifted out.
  lanes = (lanes ^ 0x0030003000300030) << (16 * (kDigits - length));
  constexpr std::uint64_t kAboveNine = 0x7FF67FF67FF67FF6;  // carries a lane above 9 into its top bit
  if (((lanes + kAboveNine) & 0x8000800080008000) != 0 || (lanes & 0x8000800080008000) != 0) return false;
  constexpr std::uint64_t kWeights = 1 | 10ULL << 16 | 100ULL << 32 | 1000ULL << 48;
  value = static_cast<int>(lanes * kWeights >> 48);
  return true;
}

#else

bool ReadShortNumber(std::u16string_view, const WCHAR*, int&) {
  return false;
}

std::uint64_t MatchBits(std::u16string_view text, WCHAR a, WCHAR b) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < std::min<std::size_t>(text.size(), kBlock); ++i)
    bits |= static_cast<std::uint64_t>(text[i] == a || text[i] == b) << i;
  return bits;
}

bool Contains(std::u16string_view text, WCHAR c) {
  return text.find(c) != std::u16string_view::npos;
}

int SumUpTo(std::u16string_view text, WCHAR end, unsigned& sum) {
  sum = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == end) return static_cast<int>(i);
    sum ^= text[i];
  }
  return -1;
}

void Widen(const char* pBytes, int nCount, WCHAR* pTo) {
  for (int i = 0; i < nCount; ++i) pTo[i] = static_cast<unsigned char>(pBytes[i]);
}

#endif

}  // namespace textscan
