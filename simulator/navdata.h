#pragma once

#include <array>
#include <cstdint>

#include "simulator/gpstime.h"
#include "simulator/orbit.h"

namespace simulator {

/// The ephemeris as satellites broadcast it, with each term a whole number of its steps.
Ephemeris AsBroadcast(const Ephemeris& ephemeris);

/// The ten words of one subframe of the navigation message, 24 data bits each, without parity. `id` is 1 to
/// 3, and the frame the last one that was whole at that time.
std::array<std::uint32_t, 10> Subframe(int id, const Ephemeris& ephemeris, const GpsTime& time);

}  // namespace simulator
