#pragma once

#include "simulator/geodesy.h"
#include "simulator/gpstime.h"

namespace simulator {

inline constexpr double kSpeedOfLight = 299792458.0;
inline constexpr double kEarthRotation = 7.2921151467e-5;  ///< rad/s, IS-GPS-200
inline constexpr double kEarthGravity = 3.986005e14;       ///< m3/s2, IS-GPS-200
inline constexpr double kGpsPi = 3.1415926535898;          ///< the pi of IS-GPS-200: a semicircle in radians

/// Broadcast ephemeris and clock of one satellite, by IS-GPS-200. Angles and their rates are in semicircles,
/// the harmonic corrections in radians and metres, times in seconds of the week. What goes out over the wire
/// as a single float is a float here too, so that the orbit and what is told of it are the same to the last
/// bit.
struct Ephemeris {
  int prn = 0;
  int issue = 0;                                    ///< of the ephemeris, and the lower bits of the clock's
  int ClockIssue() const { return issue | 0x200; }  ///< ten bits, the upper ones not all 0
  int toe = 0, toc = 0;
  float tgd = 0, af2 = 0, af1 = 0, af0 = 0;
  float delta_n = 0;
  double m0 = 0, eccentricity = 0, sqrt_a = 0;
  float cic = 0, crc = 0, cis = 0, crs = 0, cuc = 0, cus = 0;
  double omega0 = 0, omega = 0, i0 = 0;
  float omega_dot = 0, i_dot = 0;
};

/// A satellite at one moment of GPS time, in the earth-fixed frame of that same moment.
struct Satellite {
  Vector position;
  double
      clock;  ///< offset of its clock for a receiver on L1, in seconds: relativity and group delay are in it
};

Satellite SatelliteAt(const Ephemeris& ephemeris, const GpsTime& time);

/// The vector in the earth-fixed frame of `seconds` later.
Vector TurnedWithEarth(const Vector& v, double seconds);

}  // namespace simulator
