#pragma once

#include <chrono>

namespace simulator {

/// GPS system time: full week number since 6 January 1980 and seconds of that week.
struct GpsTime {
  int week = 0;
  double seconds = 0;
};

/// Seconds from `b` to `a`.
double operator-(const GpsTime& a, const GpsTime& b);
/// The time that many seconds later, the seconds of week again from 0 up to 604800.
GpsTime operator+(const GpsTime& time, double seconds);

/// GPS time of a UTC instant, with the leap seconds known in 2025.
GpsTime FromUtc(std::chrono::sys_seconds utc);

}  // namespace simulator
