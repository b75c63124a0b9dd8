#include "host/sentences/fields.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace host {

namespace {

template <class T, class... Form>
std::optional<T> Read(std::string_view field, Form... form) {
  T value{};
  const char* const end = field.data() + field.size();
  const auto [stop, error] = std::from_chars(field.data(), end, value, form...);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

/// What stands between "$" and "*", if the checksum behind that is good.
std::string_view BodyOf(std::string_view line) {
  const auto start = line.rfind('$');
  if (start == std::string_view::npos) return {};
  line.remove_prefix(start + 1);
  const auto star = line.find('*');
  if (star == std::string_view::npos || star + 3 > line.size()) return {};
  int sum = 0;
  for (const char c : line.substr(0, star)) sum ^= static_cast<unsigned char>(c);
  return WholeOf(line.substr(star + 1, 2), 16) == sum ? line.substr(0, star) : std::string_view();
}

}  // namespace

std::optional<int> WholeOf(std::string_view field, int base) {
  return Read<int>(field, base);
}

std::optional<double> NumberOf(std::string_view field) {
  const auto value = Read<double>(field, std::chars_format::fixed);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

Fields::Fields(std::string_view line) {
  std::string_view rest = BodyOf(line);
  if (rest.empty()) return;
  for (bool more = true; more;) {
    if (size_ == static_cast<int>(fields_.size())) {
      size_ = 0;
      return;
    }
    const auto comma = rest.find(',');
    fields_[static_cast<std::size_t>(size_++)] = rest.substr(0, comma);
    more = comma != std::string_view::npos;
    if (more) rest.remove_prefix(comma + 1);
  }
  constexpr std::size_t kTag = 5;
  if (fields_[0].size() == kTag) tag_ = fields_[0];
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

}  // namespace host
