#ifdef __SSE2__

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <bit>

#include "gpsengine/platform/plainscan.h"
#include "gpsengine/platform/textscan.h"

// The scans of texts sixteen bytes a step.

namespace textscan {

namespace {

constexpr int kStep = 8;  // characters of a register
constexpr int kTwoSteps = 2 * kStep;
constexpr int kBytes = 16;  // bytes of a register

__m128i Load(const WCHAR* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

__m128i LoadBytes(const char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// A bit a byte of a comparison.
unsigned ByteBits(__m128i hits) {
  return static_cast<unsigned>(_mm_movemask_epi8(hits));
}

__m128i All(WCHAR c) {
  return _mm_set1_epi16(static_cast<short>(c));
}

// A bit a character of two comparisons.
unsigned BitsOfTwo(__m128i low, __m128i high) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
}

unsigned FoldXor(__m128i sums) {
  sums = _mm_xor_si128(sums, _mm_srli_si128(sums, 8));
  sums = _mm_xor_si128(sums, _mm_srli_si128(sums, 4));
  sums = _mm_xor_si128(sums, _mm_srli_si128(sums, 2));
  return static_cast<unsigned>(_mm_extract_epi16(sums, 0));
}

}  // namespace

// A rest that fills no register is covered by a last step that reaches back over what has been looked at. It
// is the last one indeed: of a text that has just been written a load across two stores has to wait.

std::uint64_t MatchBits(std::u16string_view text, WCHAR a, WCHAR b) {
  const int length = static_cast<int>(std::min<std::size_t>(text.size(), kBlock));
  const WCHAR* p = text.data();
  const __m128i all_a = All(a);
  const __m128i all_b = All(b);
  const auto hits_at = [&](int i) {
    const __m128i characters = Load(p + i);
    return _mm_or_si128(_mm_cmpeq_epi16(characters, all_a), _mm_cmpeq_epi16(characters, all_b));
  };
  const auto bits_at = [&](int i) {
    return static_cast<std::uint64_t>(BitsOfTwo(hits_at(i), hits_at(i + kStep))) << i;
  };
  if (length < kTwoSteps) return plain::MatchBits(text, a, b);
  std::uint64_t bits = 0;
  for (int i = 0; i + kTwoSteps <= length; i += kTwoSteps) bits |= bits_at(i);
  return bits | bits_at(length - kTwoSteps);
}

std::uint64_t MatchBits(std::string_view bytes, char c) {
  const int length = static_cast<int>(std::min<std::size_t>(bytes.size(), kBlock));
  const char* p = bytes.data();
  const __m128i all = _mm_set1_epi8(c);
  const auto bits_at = [&](int i) {
    return static_cast<std::uint64_t>(ByteBits(_mm_cmpeq_epi8(LoadBytes(p + i), all))) << i;
  };
  if (length < kBytes) return plain::MatchBits(bytes, c);
  std::uint64_t bits = 0;
  for (int i = 0; i + kBytes <= length; i += kBytes) bits |= bits_at(i);
  return bits | bits_at(length - kBytes);
}

bool Contains(std::u16string_view text, WCHAR c) {
  const int length = static_cast<int>(text.size());
  const WCHAR* p = text.data();
  if (length < kTwoSteps) return plain::Contains(text, c);
  const __m128i all = All(c);
  const auto hits_at = [&](int i) {
    return _mm_or_si128(_mm_cmpeq_epi16(Load(p + i), all), _mm_cmpeq_epi16(Load(p + i + kStep), all));
  };
  __m128i hits = _mm_setzero_si128();
  for (int i = 0; i + kTwoSteps <= length; i += kTwoSteps) hits = _mm_or_si128(hits, hits_at(i));
  return _mm_movemask_epi8(_mm_or_si128(hits, hits_at(length - kTwoSteps))) != 0;
}

// The step with the end, and the rest, go one character at a time: their sum has to stop in the midst of one.
int SumUpTo(std::u16string_view text, WCHAR end, unsigned& sum) {
  const int length = static_cast<int>(text.size());
  const __m128i all = All(end);
  __m128i sums = _mm_setzero_si128();
  int i = 0;
  for (; i + kTwoSteps <= length; i += kTwoSteps) {
    const __m128i low = Load(text.data() + i);
    const __m128i high = Load(text.data() + i + kStep);
    if (BitsOfTwo(_mm_cmpeq_epi16(low, all), _mm_cmpeq_epi16(high, all)) != 0) break;
    sums = _mm_xor_si128(sums, _mm_xor_si128(low, high));
  }
  const int rest = plain::SumUpTo(text.substr(static_cast<std::size_t>(i)), end, sum);
  sum ^= FoldXor(sums);
  return rest < 0 ? -1 : i + rest;
}

namespace {

// Widens, and gives a register whose set bytes tell that there was a zero byte.
__m128i WidenBytes(const char* from, int count, WCHAR* to) {
  const __m128i zero = _mm_setzero_si128();
  __m128i zeros = zero;
  const auto step = [&](int i) {
    const __m128i bytes = LoadBytes(from + i);
    zeros = _mm_or_si128(zeros, _mm_cmpeq_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i + kStep), _mm_unpackhi_epi8(bytes, zero));
  };
  if (count < kBytes) {
    for (int i = 0; i < count; ++i) {
      to[i] = static_cast<unsigned char>(from[i]);
      if (from[i] == 0) zeros = _mm_cmpeq_epi8(zero, zero);
    }
    return zeros;
  }
  for (int i = 0; i + kBytes <= count; i += kBytes) step(i);
  step(count - kBytes);
  return zeros;
}

}  // namespace

void Widen(const char* from, int count, WCHAR* to) {
  WidenBytes(from, count, to);
}

int WidenText(const char* from, int count, WCHAR* to) {
  const bool zero = _mm_movemask_epi8(WidenBytes(from, count, to)) != 0;
  return zero ? plain::LengthOf(from, count) : count;
}

bool Narrow(std::u16string_view text, char* to) {
  const int length = static_cast<int>(text.size());
  if (length < kTwoSteps) return plain::Narrow(text, to);
  __m128i all = _mm_setzero_si128();
  const auto step = [&](int i) {
    const __m128i low = Load(text.data() + i);
    const __m128i high = Load(text.data() + i + kStep);
    all = _mm_or_si128(all, _mm_or_si128(low, high));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm_packus_epi16(low, high));
  };
  for (int i = 0; i + kTwoSteps <= length; i += kTwoSteps) step(i);
  step(length - kTwoSteps);
  return ByteBits(_mm_cmpeq_epi8(_mm_srli_epi16(all, 8), _mm_setzero_si128())) == 0xFFFF;
}

const char* FindNear(const char* from, const char* end, char c) {
  constexpr std::ptrdiff_t kNear = 8 * kBytes;
  const __m128i all = _mm_set1_epi8(c);
  const char* const near_end = from + std::min(end - from, kNear);
  const char* p = from;
  for (; near_end - p >= kBytes; p += kBytes) {
    if (const unsigned bits = ByteBits(_mm_cmpeq_epi8(LoadBytes(p), all)); bits != 0)
      return p + std::countr_zero(bits);
  }
  return plain::Find(p, end, c);
}

const char* FindAny(const char* from, const char* end, char a, char b, char c) {
  const __m128i all_a = _mm_set1_epi8(a);
  const __m128i all_b = _mm_set1_epi8(b);
  const __m128i all_c = _mm_set1_epi8(c);
  const char* p = from;
  for (; end - p >= kBytes; p += kBytes) {
    const __m128i bytes = LoadBytes(p);
    const __m128i hits =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, all_a), _mm_cmpeq_epi8(bytes, all_b)),
                     _mm_cmpeq_epi8(bytes, all_c));
    if (const unsigned bits = ByteBits(hits); bits != 0) return p + std::countr_zero(bits);
  }
  return plain::FindAny(p, end, a, b, c);
}

namespace {

// Read from its byte n on, sixteen bytes of which the last n are set.
alignas(16) constexpr std::array<unsigned char, 32> kLastBytes = [] {
  std::array<unsigned char, 32> bytes{};
  std::fill(bytes.begin() + 16, bytes.end(), 0xFF);
  return bytes;
}();

__m128i LastBytes(int count) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(kLastBytes.data() + count));
}

// Sixteen digits, the highest in the first byte, to a number: neighbours join in pairs, fours and eights.
std::uint64_t JoinDigits(__m128i digits) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i by_ten = _mm_set1_epi32(10 | 1 << 16);
  const __m128i by_hundred = _mm_set1_epi32(100 | 1 << 16);
  const __m128i by_ten_thousand = _mm_set1_epi32(10000 | 1 << 16);
  const __m128i pairs = _mm_packs_epi32(_mm_madd_epi16(_mm_unpacklo_epi8(digits, zero), by_ten),
                                        _mm_madd_epi16(_mm_unpackhi_epi8(digits, zero), by_ten));
  const __m128i fours = _mm_madd_epi16(pairs, by_hundred);
  const __m128i eights = _mm_madd_epi16(_mm_packs_epi32(fours, fours), by_ten_thousand);
  const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
  return (both & 0xFFFFFFFF) * 100'000'000 + (both >> 32);
}

}  // namespace

// All characters at once, without a branch on where the point stands or how long the number is. The number
// takes the last bytes of a register, so that its digits stand in their places.
bool ReadShortDecimal(std::u16string_view number, const WCHAR* start, std::uint64_t& digits, int& fraction) {
  constexpr std::size_t kLongest = 16;
  const WCHAR* const end = number.data() + number.size();
  if (number.size() - 1 >= kLongest) return false;
  if (end - start < static_cast<std::ptrdiff_t>(kLongest))
    return plain::ReadShortDecimal(number, digits, fraction);
  const int length = static_cast<int>(number.size());
  // A character beyond a byte becomes one that is neither digit nor point.
  const __m128i characters = _mm_packus_epi16(Load(end - 2 * kStep), Load(end - kStep));
  const __m128i values = _mm_sub_epi8(characters, _mm_set1_epi8('0'));
  const __m128i is_digit = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
  const __m128i is_point = _mm_cmpeq_epi8(characters, _mm_set1_epi8('.'));
  const unsigned all = 0xFFFF & 0xFFFF << (kLongest - number.size());
  const unsigned digit_bits = all & static_cast<unsigned>(_mm_movemask_epi8(is_digit));
  const unsigned point_bits = all & static_cast<unsigned>(_mm_movemask_epi8(is_point));
  if ((digit_bits | point_bits) != all || (point_bits & (point_bits - 1)) != 0) return false;
  if (digit_bits == 0 || digit_bits == 0xFFFF) return false;  // none, or one too many for a double
  __m128i own = _mm_and_si128(values, LastBytes(length));
  fraction = 0;
  if (point_bits != 0) {
    // The digits before the point move up by one, over the point.
    fraction = static_cast<int>(kLongest) - 1 - std::countr_zero(point_bits);
    const __m128i behind = LastBytes(fraction);
    own = _mm_or_si128(_mm_and_si128(behind, own), _mm_andnot_si128(behind, _mm_slli_si128(own, 1)));
  }
  digits = JoinDigits(own);
  return true;
}

}  // namespace textscan

#endif
