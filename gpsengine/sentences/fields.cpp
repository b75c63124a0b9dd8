#include "gpsengine/sentences/fields.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "gpsengine/platform/textscan.h"

namespace gps {

namespace {

template <class T, class... Form>
std::optional<T> Read(std::string_view field, Form... form) {
  T value{};
  const char* const end = field.data() + field.size();
  const auto [stop, error] = std::from_chars(field.data(), end, value, form...);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const int letter = (c | 0x20) - 'a';
  return letter >= 0 && letter < 6 ? letter + 10 : -1;
}

/// The exclusive or of all bytes, eight at a time.
int SumOf(std::string_view text) {
  std::uint64_t sum = 0;
  for (; text.size() >= sizeof sum; text.remove_prefix(sizeof sum)) {
    std::uint64_t eight;
    std::memcpy(&eight, text.data(), sizeof eight);
    sum ^= eight;
  }
  for (const char c : text) sum ^= static_cast<unsigned char>(c);
  for (const int half : {32, 16, 8}) sum ^= sum >> half;
  return static_cast<int>(sum & 0xFF);
}

/// Nothing, if there is none.
std::string_view FromLastDollar(std::string_view line) {
  line.remove_prefix(std::min(line.find('$'), line.size()));
  for (auto next = line.find('$', 1); next != std::string_view::npos; next = line.find('$', 1))
    line.remove_prefix(next);
  return line;
}

bool IsChecksum(std::string_view digits, int sum) {
  return digits.size() >= 2 && HexDigit(digits[0]) == sum >> 4 && HexDigit(digits[1]) == (sum & 15);
}

}  // namespace

std::optional<int> WholeOf(std::string_view field, int base) {
  if (field.size() == 1) {
    const int digit = HexDigit(field[0]);
    return digit >= 0 && digit < base ? std::optional(digit) : std::nullopt;
  }
  return Read<int>(field, base);
}

std::optional<double> NumberOf(std::string_view field) {
  std::uint64_t digits = 0;
  int fraction = 0;
  if (textscan::ReadPlainDecimal(field, digits, fraction)) return textscan::ToDouble(digits, fraction);
  const auto value = Read<double>(field, std::chars_format::fixed);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

Fields::Fields(std::string_view line) {
  auto sentence = line.starts_with('$') ? line : FromLastDollar(line);
  while (!Split(sentence)) {
    const auto last = FromLastDollar(line);
    if (last.size() == sentence.size()) return;
    sentence = last;
  }
  constexpr std::size_t kTag = 5;
  if (const auto tag = (*this)[0]; tag.size() == kTag) tag_ = tag;
}

/// Takes what stands between the "$" that it begins with and the asterisk, if the checksum after that is
/// good.
inline bool Fields::Split(std::string_view sentence) {
  const auto star = sentence.find('*');
  if (star == 1 || star == std::string_view::npos) return false;
  auto body = sentence.substr(1, star - 1);
  if (!IsChecksum(sentence.substr(star + 1), SumOf(body))) return false;
  static_assert(kBlock == textscan::kBlock);
  const char** border = borders_.data();
  *border++ = sentence.data();
  for (; !body.empty(); body.remove_prefix(std::min(kBlock, body.size()))) {
    for (auto commas = textscan::MatchBits(body, ','); commas != 0; commas &= commas - 1)
      *border++ = body.data() + static_cast<unsigned>(std::countr_zero(commas));
    if (border > borders_.data() + kMost) return false;
  }
  *border = body.data();
  size_ = static_cast<int>(border - borders_.data());
  return true;
}

std::optional<double> TimeOf(std::string_view field) {
  const auto time = field.size() < 6 ? std::nullopt : NumberOf(field);
  if (!time || *time < 0.0 || *time >= 240'000.0) return std::nullopt;
  const int whole = static_cast<int>(*time);
  return whole / 10'000 * 3600 + whole / 100 % 100 * 60 + whole % 100 + (*time - whole);
}

int TimeFieldOf(const Fields& sentence) {
  if (sentence.Is("GGA") || sentence.Is("RMC") || sentence.Is("ZDA") || sentence.Is("GNS")) return 1;
  return sentence.Is("GLL") ? 5 : 0;
}

std::optional<double> TimeOfDayOf(std::string_view line) {
  const Fields sentence(line);
  const int field = TimeFieldOf(sentence);
  return field > 0 ? TimeOf(sentence[field]) : std::nullopt;
}

}  // namespace gps
