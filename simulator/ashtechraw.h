#pragma once

#include <string>

#include "simulator/nmea.h"
#include "simulator/world.h"

namespace simulator {

// The binary messages of Ashtech receivers, "$PASHR," frames with big-endian numbers and a checksum of 16-bit
// words. Readers of these messages subtract the range from one second and turn the signs of phase and
// Doppler, so the fields hold one second less the flight time, and phase and Doppler negated.

/// One satellite's measurements; `to_follow` counts those of the same epoch that come after it.
std::string Mbn(const Observation& observation, int to_follow);

/// Position and clock of an epoch. `receiver_time` is its reading of the receiver's clock, `truth` what was
/// so at that moment.
std::string Pbn(const GpsTime& receiver_time, const Truth& truth, const Dilution& dilution);

/// One satellite's ephemeris as sent at that time. The week is the ten-bit one that satellites broadcast.
std::string Snv(const Ephemeris& ephemeris, const GpsTime& time);

}  // namespace simulator
