#include "host/exports/plane.h"

#include <algorithm>
#include <cmath>

#include "host/records/units.h"

namespace host {

namespace {

constexpr double kEquator = 6378137.0, kEccentricity2 = 0.0066943799901413165, kRadius = 6371000.0;  // WGS 84

std::array<double, 3> EarthPoint(double latitude, double longitude) {
  const double sine = std::sin(latitude), normal = kEquator / std::sqrt(1.0 - kEccentricity2 * sine * sine);
  const double off = normal * std::cos(latitude);
  return {off * std::cos(longitude), off * std::sin(longitude), normal * (1.0 - kEccentricity2) * sine};
}

}  // namespace

Plane::Plane(double latitude, double longitude)
    : sine_(std::sin(latitude / kDegrees)),
      cosine_(std::cos(latitude / kDegrees)),
      sine_east_(std::sin(longitude / kDegrees)),
      cosine_east_(std::cos(longitude / kDegrees)),
      home_(EarthPoint(latitude / kDegrees, longitude / kDegrees)) {}

Offset Plane::Of(double latitude, double longitude) const {
  const auto there = EarthPoint(latitude / kDegrees, longitude / kDegrees);
  const double x = there[0] - home_[0], y = there[1] - home_[1], z = there[2] - home_[2];
  const double out = x * cosine_east_ + y * sine_east_;
  const Offset flat{y * cosine_east_ - x * sine_east_, z * cosine_ - out * sine_};
  const double length = flat.Length();
  if (length == 0.0) return flat;
  // The way along the ground is longer than the straight one.
  const double chord = std::hypot(x, y, z);
  const double stretch = 2.0 * kRadius * std::asin(std::min(1.0, chord / 2.0 / kRadius)) / length;
  return {flat.east * stretch, flat.north * stretch};
}

}  // namespace host
