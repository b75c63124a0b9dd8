#include "gpsengine/platform/textscan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <type_traits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Sixteen characters a step, in vectors that the compiler makes the registers of any processor of.

namespace textscan {

namespace {

constexpr int kStep = 16;

using Bytes [[gnu::vector_size(kStep)]] = unsigned char;
using Words [[gnu::vector_size(kStep)]] = std::uint16_t;  // half of a step
using Ints [[gnu::vector_size(kStep)]] = std::uint32_t;
using Longs [[gnu::vector_size(kStep)]] = std::uint64_t;

template <class Vector, class Character>
Vector Load(const Character* p) {
  Vector loaded;
  std::memcpy(&loaded, p, sizeof loaded);
  return loaded;
}

template <class To, class From>
To As(From bits) {
  return reinterpret_cast<To>(bits);
}

// Two vectors of words as one of bytes. A word beyond a byte becomes 0 or 255.
Bytes Narrowed(Words low, Words high) {
#ifdef __SSE2__
  return As<Bytes>(_mm_packus_epi16(As<__m128i>(low), As<__m128i>(high)));
#else
  using AllWords [[gnu::vector_size(2 * kStep)]] = std::uint16_t;
  const auto cut = [](Words words) { return words | As<Words>(words > 0xFF); };
  return __builtin_convertvector(std::bit_cast<AllWords>(std::array<Words, 2>{cut(low), cut(high)}), Bytes);
#endif
}

// A bit a byte of a comparison, from the lowest byte up.
unsigned BitsOf(Bytes hits) {
#ifdef __SSE2__
  return static_cast<unsigned>(_mm_movemask_epi8(As<__m128i>(hits)));
#else
  // A bit of each byte, each in a place of its own, summed up in the uppermost byte.
  const auto bits = [](std::uint64_t half) { return (half & 0x8040201008040201) * 0x0101010101010101 >> 56; };
  return static_cast<unsigned>(bits(As<Longs>(hits)[0]) | bits(As<Longs>(hits)[1]) << 8);
#endif
}

// The same of two comparisons of words.
unsigned BitsOf(Words low, Words high) {
#ifdef __SSE2__
  return BitsOf(As<Bytes>(_mm_packs_epi16(As<__m128i>(low), As<__m128i>(high))));
#else
  return BitsOf(Narrowed(low, high));
#endif
}

// A bit a character of a step that passes a test, which takes characters or vectors of them.
template <class Test>
unsigned Hits(const char* p, Test test) {
  return BitsOf(As<Bytes>(test(Load<Bytes>(p))));
}
template <class Test>
unsigned Hits(const WCHAR* p, Test test) {
  return BitsOf(As<Words>(test(Load<Words>(p))), As<Words>(test(Load<Words>(p + kStep / 2))));
}

void WidenStep(Bytes step, WCHAR* to) {
  constexpr bool kLowFirst = std::endian::native == std::endian::little;
  const Bytes even = kLowFirst ? step : Bytes{}, odd = kLowFirst ? Bytes{} : step;
  const Bytes lower =
      __builtin_shufflevector(even, odd, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const Bytes upper =
      __builtin_shufflevector(even, odd, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  std::memcpy(to, &lower, sizeof lower);
  std::memcpy(to + kStep / 2, &upper, sizeof upper);
}

// How many bytes stand before the first zero.
[[gnu::noinline]] int LengthOf(const char* bytes, int count) {
  const void* const zero = std::memchr(bytes, 0, static_cast<std::size_t>(count));
  return zero == nullptr ? count : static_cast<int>(static_cast<const char*>(zero) - bytes);
}

auto IsOneOf(std::uint16_t a, std::uint16_t b) {
  return [=](auto each) { return (each == a) | (each == b); };
}
auto IsOneOf(unsigned char a, unsigned char b, unsigned char c) {
  return [=](auto each) { return (each == a) | (each == b) | (each == c); };
}
auto Is(unsigned char c) {
  return [=](auto each) { return each == c; };
}

// A rest that fills no step is covered by a last step that reaches back over what has been looked at. It is
// the last one indeed: of a text that has just been written a load across two stores has to wait. The text
// has a step at least.
template <class Take>
void TakeInSteps(int length, Take take) {
  for (int i = 0; i + kStep <= length; i += kStep) take(i);
  take(length - kStep);
}

template <class View, class Test>
std::uint64_t Match(View text, Test test) {
  using Character = std::make_unsigned_t<typename View::value_type>;
  const int length = static_cast<int>(std::min<std::size_t>(text.size(), kBlock));
  const auto* const p = text.data();
  std::uint64_t bits = 0;
  if (length >= kStep) {
    TakeInSteps(length, [&](int i) { bits |= static_cast<std::uint64_t>(Hits(p + i, test)) << i; });
  } else {
    for (int i = 0; i < length; ++i)
      bits |= static_cast<std::uint64_t>(test(static_cast<Character>(p[i]))) << i;
  }
  return bits;
}

template <class Test>
const char* FindFirst(const char* p, const char* end, Test test) {
  for (; end - p >= kStep; p += kStep) {
    if (const unsigned bits = Hits(p, test); bits != 0) return p + std::countr_zero(bits);
  }
  p = std::find_if(p, end, [&](unsigned char each) { return test(each) != 0; });
  return p == end ? nullptr : p;
}

}  // namespace

std::uint64_t MatchBits(std::u16string_view text, WCHAR a, WCHAR b) {
  return Match(text, IsOneOf(a, b));
}

std::uint64_t MatchBits(std::string_view bytes, char c) {
  return Match(bytes, Is(static_cast<unsigned char>(c)));
}

bool Contains(std::u16string_view text, WCHAR c) {
  if (text.size() < kStep) return text.find(c) != text.npos;
  const auto test = IsOneOf(c, c);
  Words hits{};
  TakeInSteps(static_cast<int>(text.size()), [&](int i) {
    const WCHAR* const p = text.data() + i;
    hits |= As<Words>(test(Load<Words>(p)) | test(Load<Words>(p + kStep / 2)));
  });
  return BitsOf(hits, hits) != 0;
}

// The step with the end, and the rest, go one character at a time: their sum has to stop in the midst of one.
int SumUpTo(std::u16string_view text, WCHAR end, unsigned& sum) {
  const std::size_t length = text.size();
  Words sums{};
  std::size_t i = 0;
  for (; i + kStep <= length && Hits(&text[i], IsOneOf(end, end)) == 0; i += kStep)
    sums ^= Load<Words>(&text[i]) ^ Load<Words>(&text[i] + kStep / 2);
  std::uint64_t all = As<Longs>(sums)[0] ^ As<Longs>(sums)[1];
  all ^= all >> 32;
  all ^= all >> 16;
  sum = static_cast<WCHAR>(all);
  for (; i < length; ++i) {
    if (text[i] == end) return static_cast<int>(i);
    sum ^= text[i];
  }
  return -1;
}

int WidenText(const char* bytes, int count, WCHAR* to) {
  if (count < kStep) {
    for (int i = 0; i < count; ++i) to[i] = static_cast<unsigned char>(bytes[i]);
    return LengthOf(bytes, count);
  }
  Bytes zeros{};
  TakeInSteps(count, [&](int i) {
    const auto step = Load<Bytes>(bytes + i);
    zeros |= As<Bytes>(step == 0);
    WidenStep(step, to + i);
  });
  return BitsOf(zeros) == 0 ? count : LengthOf(bytes, count);
}

bool Narrow(std::u16string_view text, char* to) {
  if (text.size() < kStep) {
    WCHAR all = 0;
    for (const WCHAR c : text) {
      all |= c;
      *to++ = static_cast<char>(c);
    }
    return all <= 0xFF;
  }
  Words all{};
  TakeInSteps(static_cast<int>(text.size()), [&](int i) {
    const WCHAR* const p = text.data() + i;
    const auto low = Load<Words>(p), high = Load<Words>(p + kStep / 2);
    all |= low | high;
    const Bytes narrow = Narrowed(low, high);
    std::memcpy(to + i, &narrow, sizeof narrow);
  });
  return BitsOf(As<Bytes>((all >> 8) == 0)) == 0xFFFF;
}

const char* Find(const char* bytes, const char* end, char c) {
  return FindFirst(bytes, end, Is(static_cast<unsigned char>(c)));
}

const char* FindAny(const char* bytes, const char* end, char a, char b, char c) {
  return FindFirst(
      bytes, end,
      IsOneOf(static_cast<unsigned char>(a), static_cast<unsigned char>(b), static_cast<unsigned char>(c)));
}

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

namespace {

// Read from its byte n on, sixteen bytes of which the last n are set.
constexpr std::array<unsigned char, 2 * kStep> kLastBytes = [] {
  std::array<unsigned char, 2 * kStep> bytes{};
  std::fill(bytes.begin() + kStep, bytes.end(), 0xFF);
  return bytes;
}();

Bytes LastBytes(int count) {
  return Load<Bytes>(kLastBytes.data() + count);
}

// Sixteen digits, the highest in the first byte, to a number: neighbours join in pairs, fours and eights.
std::uint64_t JoinDigits(Bytes digits) {
  const Words pairs = (As<Words>(digits) & 0xFF) * 10 + (As<Words>(digits) >> 8);
  const auto weighted = As<Ints>(pairs * Words{100, 1, 100, 1, 100, 1, 100, 1});
  const auto fours = As<Longs>((weighted & 0xFFFF) + (weighted >> 16));
  const auto eight = [&](int i) { return (fours[i] & 0xFFFFFFFF) * 10'000 + (fours[i] >> 32); };
  return eight(0) * 100'000'000 + eight(1);
}

}  // namespace

// All characters at once, without a branch on where the point stands or how long the number is. The number
// takes the last bytes of a step, so that its digits stand in their places.
bool ReadShortDecimal(std::u16string_view number, const WCHAR* start, std::uint64_t& digits, int& fraction) {
  constexpr std::size_t kLongest = kStep;
  const WCHAR* const end = number.data() + number.size();
  if (number.size() - 1 >= kLongest) return false;
  if (std::endian::native != std::endian::little || end - start < kStep)
    return ReadPlainDecimal(number, digits, fraction);
  const Bytes characters = Narrowed(Load<Words>(end - kStep), Load<Words>(end - kStep / 2));
  const Bytes values = characters - '0';
  const unsigned all = 0xFFFF & 0xFFFF << (kLongest - number.size());
  const unsigned digit_bits = all & BitsOf(As<Bytes>(values <= 9));
  const unsigned point_bits = all & BitsOf(As<Bytes>(characters == '.'));
  if ((digit_bits | point_bits) != all || (point_bits & (point_bits - 1)) != 0) return false;
  if (digit_bits == 0 || digit_bits == 0xFFFF) return false;  // none, or one too many for a double
  Bytes own = values & LastBytes(static_cast<int>(number.size()));
  fraction = 0;
  if (point_bits != 0) {
    // The digits before the point move up by one, over the point.
    fraction = kStep - 1 - std::countr_zero(point_bits);
    const Bytes behind = LastBytes(fraction);
    const Bytes moved =
        __builtin_shufflevector(own, Bytes{}, 16, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14);
    own = (behind & own) | (~behind & moved);
  }
  digits = JoinDigits(own);
  return true;
}

}  // namespace textscan
