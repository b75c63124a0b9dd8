#pragma once

#include <string_view>

#include "gpsengine/face/fixreader.h"
#include "host/run/face.h"

namespace host {

/// The units in which people read lengths and speeds.
enum class Units { metric, imperial, nautical };

struct Unit {
  std::string_view name;
  double per_metre;  ///< How many make a metre, or a metre a second.
};

constexpr Unit kKnots{"kn", 3600.0 / 1852.0};

/// The units that go together.
struct UnitSystem {
  Unit length, distance;  ///< For what is seen from close by, and for ways.
  double far;             ///< A way at least this long is told in the unit of distances.
  Unit speed;
  Unit both_speeds[2];  ///< Where there is room for two.
};
const UnitSystem& SystemOf(Units units);

/// What to do with the geoid separation of a position sentence, in the numbers that
/// CGPSReceiver::SetupReceiver takes.
enum class Geoid : int { none = 0, add = 1, subtract = 2 };

}  // namespace host
