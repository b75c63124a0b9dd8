#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace host {

/// What a GGA or GNS sentence says after its height, which records do not carry.
struct PositionTail {
  std::optional<double> separation;  ///< Metres that the geoid lies above the ellipsoid.
  std::string age, station;          ///< Of the corrections, as they stand there.
};

/// None for another sentence, or a broken one.
std::optional<PositionTail> PositionTailOf(std::string_view line);

}  // namespace host
