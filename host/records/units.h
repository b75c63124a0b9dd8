#pragma once

#include <cmath>
#include <numbers>
#include <optional>

#include "gpsengine/records/gpsdata.h"

namespace host {

/// In a radian.
constexpr double kDegrees = 180.0 / std::numbers::pi;

/// A dilution of precision, unless the receiver has put something else where it knows none.
inline std::optional<double> KnownDilution(double dilution) {
  return dilution > 0.0 && dilution < 1e4 ? std::optional(dilution) : std::nullopt;
}

/// The course over ground in degrees from north, clockwise. The record counts from east, anticlockwise.
inline double CourseOf(const CGPSData& data) {
  return std::fmod(450.0 - data.m_dHeading * kDegrees, 360.0);
}

}  // namespace host
