#pragma once

#include <optional>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace gps {

/// What a GGA or GNS sentence says after its height, which records do not carry.
struct PositionTail {
  std::optional<double> separation;  ///< Metres that the geoid lies above the ellipsoid.
  /// Of the corrections, as they stand there.
  ///@{
  std::string age, station;
  ///@}
};

/// None for another sentence, or a broken one.
std::optional<PositionTail> PositionTailOf(std::string_view line);

}  // namespace gps

#pragma GCC visibility pop
