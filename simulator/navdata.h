#pragma once

#include <array>
#include <cstdint>

#include "simulator/gpstime.h"

namespace simulator {

/// The ten words of one subframe of the navigation message, 24 data bits each, without parity: preamble and
/// handover word are right, and the rest is the alternating ones and zeros that satellites send in place of
/// data. `id` is 1 to 5.
std::array<std::uint32_t, 10> Subframe(int id, const GpsTime& time);

}  // namespace simulator
