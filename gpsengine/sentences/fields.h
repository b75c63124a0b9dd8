#pragma once

#include <array>
#include <cstring>
#include <optional>
#include <string_view>

#pragma GCC visibility push(default)

namespace gps {

/// A sentence of the standard by its fields, which stand in the text that it was read from.
class Fields {
 public:
  /// Takes the sentence that a line of a receiver's output begins with, or else the one from its last "$" on.
  /// One without a good checksum, or with more fields than any has, is none.
  explicit Fields(std::string_view line);

  /// Whether it is one.
  explicit operator bool() const { return size_ > 0; }
  /// Who speaks: "GP", "GN", … Empty for a tag that is not of the standard's length.
  std::string_view Talker() const { return tag_.substr(0, 2); }
  /// Whether it is of that kind: "GGA", "GSV", …
  bool Is(const char (&kind)[4]) const { return !tag_.empty() && std::memcmp(tag_.data() + 2, kind, 3) == 0; }
  /// How many fields there are, the tag included.
  int Size() const { return size_; }
  /// A field by its number, 0 being the tag; empty if there are fewer.
  std::string_view operator[](int number) const {
    if (number >= size_) return {};
    const char* const* const border = borders_.data() + number;
    return {border[0] + 1, border[1]};
  }

 private:
  static constexpr std::size_t kMost = 40, kBlock = 64;

  bool Split(std::string_view sentence);

  // The "$", the commas and the asterisk. What is split at once has room beyond.
  std::array<const char*, kMost + kBlock> borders_;
  int size_ = 0;
  std::string_view tag_;
};

/// The number that a field holds; none if it holds anything else.
///@{
std::optional<int> WholeOf(std::string_view field, int base = 10);
std::optional<double> NumberOf(std::string_view field);
///@}
/// The whole number that a field holds, or that other one.
inline int WholeOr(std::string_view field, int other) {
  constexpr std::size_t kShort = 9;
  if (field.empty()) return other;
  if (field.size() > kShort) return WholeOf(field).value_or(other);
  int value = 0;
  for (const char c : field) {
    const int digit = c - '0';
    if (digit < 0 || digit > 9) return WholeOf(field).value_or(other);
    value = value * 10 + digit;
  }
  return value;
}
/// The seconds of the day after "hhmmss.ss".
std::optional<double> TimeOf(std::string_view field);

/// The field that holds the time of day; 0 for a sentence that has none.
int TimeFieldOf(const Fields& sentence);

/// The time of day, in seconds, that a line of a receiver's output tells.
std::optional<double> TimeOfDayOf(std::string_view line);

}  // namespace gps

#pragma GCC visibility pop
