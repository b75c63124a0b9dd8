#pragma once

#include <array>
#include <optional>
#include <string_view>

#pragma GCC visibility push(default)

namespace gps {

/// A sentence of the standard by its fields, which stand in the text that it was read from.
class Fields {
 public:
  /// Takes the sentence of a line of a receiver's output, from its last "$" on. One without a good checksum,
  /// or with more fields than any has, is none.
  explicit Fields(std::string_view line);

  /// Whether it is one.
  explicit operator bool() const { return size_ > 0; }
  /// Who speaks: "GP", "GN", … Empty for a tag that is not of the standard's length.
  std::string_view Talker() const { return tag_.substr(0, 2); }
  /// "GGA", "GSV", …
  std::string_view Kind() const { return tag_.substr(tag_.empty() ? 0 : 2); }
  /// How many fields there are, the tag included.
  int Size() const { return size_; }
  /// A field by its number, 0 being the tag; empty if there are fewer.
  std::string_view operator[](int number) const {
    if (number >= size_) return {};
    const char* const* const start = starts_.data() + number;
    return {start[0], start[1] - 1};  // before the comma
  }

 private:
  static constexpr std::size_t kMost = 40;

  void Split(std::string_view sentence);

  std::array<const char*, kMost + 1> starts_;  // of each field, and where the next one would start
  int size_ = 0;
  std::string_view tag_;
};

/// The number that a field holds; none if it holds anything else.
///@{
std::optional<int> WholeOf(std::string_view field, int base);
inline std::optional<int> WholeOf(std::string_view field) {
  constexpr std::size_t kShort = 9;
  unsigned value = 0;
  for (const char c : field.substr(0, kShort)) {
    const auto digit = static_cast<unsigned>(c - '0');
    if (digit > 9) return WholeOf(field, 10);
    value = value * 10 + digit;
  }
  if (field.empty() || field.size() > kShort) return WholeOf(field, 10);
  return static_cast<int>(value);
}
std::optional<double> NumberOf(std::string_view field);
///@}
/// The seconds of the day after "hhmmss.ss".
std::optional<double> TimeOf(std::string_view field);

/// The field that holds the time of day; 0 for a sentence that has none.
int TimeFieldOf(const Fields& sentence);

/// The time of day, in seconds, that a line of a receiver's output tells.
std::optional<double> TimeOfDayOf(std::string_view line);

}  // namespace gps

#pragma GCC visibility pop
