#pragma once

#include <array>

#include "host/records/epoch.h"

namespace host {

/// A plane about a place on the ellipsoid of WGS 84: distances and directions from that place are true, at
/// any latitude and across the date line.
class Plane {
 public:
  /// Degrees.
  Plane(double latitude, double longitude);
  Offset Of(double latitude, double longitude) const;

 private:
  double sine_, cosine_;            // of the latitude
  double sine_east_, cosine_east_;  // of the longitude
  std::array<double, 3> home_;      // metres from the middle of the earth
};

}  // namespace host
