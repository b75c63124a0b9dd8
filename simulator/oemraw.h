#pragma once

#include <vector>

#include "simulator/world.h"

namespace simulator {

/// Measurements of one epoch.
std::string RangeLog(const GpsTime& time, const std::vector<Observation>& observations);
/// The same in half the bytes, and a little coarser.
std::string CompressedRangeLog(const GpsTime& time, const std::vector<Observation>& observations);
/// The first three subframes of one satellite.
std::string RawEphemerisLog(const GpsTime& time, const Ephemeris& ephemeris);
/// What they say.
std::string EphemerisLog(const GpsTime& time, const Ephemeris& ephemeris);
/// The coarse orbits of those satellites.
std::string AlmanacLog(const GpsTime& time, const std::vector<Ephemeris>& ephemerides);

}  // namespace simulator
