#pragma once

#include <cmath>
#include <numbers>

#include "gpsengine/records/gpsdata.h"

namespace host {

/// In a radian.
constexpr double kDegrees = 180.0 / std::numbers::pi;

/// The course over ground in degrees from north, clockwise. The record counts from east, anticlockwise.
inline double CourseOf(const CGPSData& data) {
  return std::fmod(450.0 - data.m_dHeading * kDegrees, 360.0);
}

}  // namespace host
