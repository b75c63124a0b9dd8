#include "gpsengine/sentences/fields.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

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

/// A number of few digits, with or without a point. They and their power of ten are exact in a double, so
/// that it is the nearest one to their ratio. None for any other.
std::optional<double> PlainNumberOf(std::string_view field) {
  constexpr std::size_t kExactDigits = 15;
  if (field.size() > kExactDigits) return std::nullopt;
  std::int64_t digits = 0;
  double power = 1.0;
  bool has_digits = false, has_point = false;
  for (const char c : field) {
    if (c == '.' && !has_point) {
      has_point = true;
      continue;
    }
    if (c < '0' || c > '9') return std::nullopt;
    digits = digits * 10 + (c - '0');
    has_digits = true;
    if (has_point) power *= 10.0;
  }
  return has_digits ? std::optional(static_cast<double>(digits) / power) : std::nullopt;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const int letter = (c | 0x20) - 'a';
  return letter >= 0 && letter < 6 ? letter + 10 : -1;
}

/// The exclusive or of the bytes, eight a step.
int SumOf(std::string_view bytes) {
  std::uint64_t sum = 0;
  for (; bytes.size() >= sizeof sum; bytes.remove_prefix(sizeof sum)) {
    std::uint64_t word;
    std::memcpy(&word, bytes.data(), sizeof word);
    sum ^= word;
  }
  for (int half = 32; half >= 8; half /= 2) sum ^= sum >> half;
  for (const char c : bytes) sum ^= static_cast<unsigned char>(c);
  return static_cast<int>(sum & 0xFF);
}

bool IsChecksum(std::string_view digits, int sum) {
  return digits.size() == 2 && HexDigit(digits[0]) == sum >> 4 && HexDigit(digits[1]) == (sum & 15);
}

}  // namespace

std::optional<int> WholeOf(std::string_view field, int base) {
  return Read<int>(field, base);
}

std::optional<double> NumberOf(std::string_view field) {
  if (const auto plain = PlainNumberOf(field)) return plain;
  const auto value = Read<double>(field, std::chars_format::fixed);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

Fields::Fields(std::string_view line) {
  for (auto start = line.find('$'); start != std::string_view::npos; start = line.find('$', 1))
    line.remove_prefix(start);
  if (!line.starts_with('$')) return;
  Split(line.substr(1));
  constexpr std::size_t kTag = 5;
  if (const auto tag = (*this)[0]; tag.size() == kTag) tag_ = tag;
}

/// Takes what stands before the asterisk, if the checksum after that is good.
void Fields::Split(std::string_view sentence) {
  const auto star = sentence.find('*');
  if (star == 0 || star == std::string_view::npos) return;
  auto body = sentence.substr(0, star);
  if (!IsChecksum(sentence.substr(star + 1, 2), SumOf(body))) return;
  std::size_t size = 1;
  starts_[0] = body.data();
  for (; !body.empty(); body.remove_prefix(std::min<std::size_t>(textscan::kBlock, body.size()))) {
    for (auto commas = textscan::MatchBits(body, ','); commas != 0; commas &= commas - 1) {
      if (size == kMost) return;
      starts_[size++] = body.data() + std::countr_zero(commas) + 1;
    }
  }
  starts_[size] = body.data() + 1;  // behind the asterisk
  size_ = static_cast<int>(size);
}

std::optional<double> TimeOf(std::string_view field) {
  const auto time = field.size() < 6 ? std::nullopt : NumberOf(field);
  if (!time || *time < 0.0 || *time >= 240'000.0) return std::nullopt;
  const int whole = static_cast<int>(*time);
  return whole / 10'000 * 3600 + whole / 100 % 100 * 60 + whole % 100 + (*time - whole);
}

int TimeFieldOf(const Fields& sentence) {
  constexpr struct {
    std::string_view kind;
    int field;
  } kSentences[] = {{"GGA", 1}, {"RMC", 1}, {"ZDA", 1}, {"GNS", 1}, {"GLL", 5}};
  const auto* const found = std::find_if(std::begin(kSentences), std::end(kSentences),
                                         [&](const auto& row) { return row.kind == sentence.Kind(); });
  return found != std::end(kSentences) ? found->field : 0;
}

std::optional<double> TimeOfDayOf(std::string_view line) {
  const Fields sentence(line);
  const int field = TimeFieldOf(sentence);
  return field > 0 ? TimeOf(sentence[field]) : std::nullopt;
}

}  // namespace gps
