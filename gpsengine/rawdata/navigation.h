#pragma once

#include <array>
#include <cstdint>

#include "gpsengine/rawdata/rawdata.h"

namespace rawdata {

/// The first three subframes of a satellite's navigation message, ten words each, as 24 bits of data without
/// parity and not inverted.
using Subframes = std::array<std::array<std::uint32_t, 10>, 3>;

inline constexpr double kSecondsOfWeek = 604800.0;
inline constexpr double kGpsPi = 3.1415926535898;  // of IS-GPS-200

inline bool IsGpsSatellite(unsigned satellite) {
  return satellite >= 1 && satellite <= 32;
}

/// What the subframes say, with ten bits of the week. False unless they are the three of one issue of data.
bool ReadSubframes(unsigned satellite, const Subframes& subframes, BroadcastEphemeris& ephemeris);

/// Whether a satellite can fly and count so.
bool IsPossible(const CGPSDataEphemeris& orbit);

}  // namespace rawdata
