#include "host/records/ggatail.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "host/records/moment.h"

namespace host {

namespace {

// What others are to read again has nothing in it but numbers and names.
std::string WordOf(std::string_view field) {
  const bool plain = std::all_of(field.begin(), field.end(), [](unsigned char c) {
    return c < 0x80 && (std::isalnum(c) != 0 || c == '.' || c == '-');
  });
  return plain ? std::string(field) : std::string();
}

}  // namespace

std::optional<GgaTail> GgaTailOf(std::string_view sentence) {
  constexpr int kSeparation = 11, kUnit = 12, kAge = 13, kStation = 14;
  const auto tag = FieldOf(sentence, 0);
  if (!tag.starts_with('$') || !tag.ends_with("GGA")) return std::nullopt;
  GgaTail tail;
  const auto text = FieldOf(sentence, kSeparation), unit = FieldOf(sentence, kUnit);
  const char* const end = text.data() + text.size();
  double metres = 0.0;
  const auto [stop, error] = std::from_chars(text.data(), end, metres);
  if (error == std::errc() && stop == end && (unit == "M" || unit == "m")) tail.separation = metres;
  tail.age = WordOf(FieldOf(sentence, kAge));
  tail.station = WordOf(FieldOf(sentence, kStation));
  return tail;
}

}  // namespace host
