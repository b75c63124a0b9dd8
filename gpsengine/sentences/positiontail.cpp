#include "gpsengine/sentences/positiontail.h"

#include <algorithm>
#include <cctype>

#include "gpsengine/sentences/fields.h"

namespace gps {

namespace {

// What others are to read again has nothing in it but numbers and names.
std::string WordOf(std::string_view field) {
  const bool plain = std::all_of(field.begin(), field.end(), [](unsigned char c) {
    return c < 0x80 && (std::isalnum(c) != 0 || c == '.' || c == '-');
  });
  return plain ? std::string(field) : std::string();
}

}  // namespace

std::optional<PositionTail> PositionTailOf(std::string_view line) {
  const Fields sentence(line);
  const bool is_gga = sentence.Is("GGA");
  if (!is_gga && !sentence.Is("GNS")) return std::nullopt;
  const int separation = is_gga ? 11 : 10;
  // A GNS has no units: its heights are in metres.
  const auto unit = is_gga ? sentence[separation + 1] : "M";
  const int age = separation + (is_gga ? 2 : 1);
  PositionTail tail;
  if (unit == "M" || unit == "m") tail.separation = NumberOf(sentence[separation]);
  tail.age = WordOf(sentence[age]);
  tail.station = WordOf(sentence[age + 1]);
  return tail;
}

}  // namespace gps
