#include "simulator/orbit.h"

#include <cmath>

namespace simulator {
namespace {

constexpr double kRelativistic = -4.442807633e-10;  // s per root metre

// Seconds since a reference time in the same or the next door week.
double Since(int reference, const GpsTime& time) {
  return std::remainder(time.seconds - reference, 604800.0);
}

double EccentricAnomaly(double mean, double eccentricity) {
  double anomaly = mean;
  for (int i = 0; i < 10; ++i) {
    anomaly -= (anomaly - eccentricity * std::sin(anomaly) - mean) / (1 - eccentricity * std::cos(anomaly));
  }
  return anomaly;
}

}  // namespace

// Names follow the user algorithm for ephemeris determination of IS-GPS-200, table 20-IV.
Satellite SatelliteAt(const Ephemeris& eph, const GpsTime& time) {
  const double tk = Since(eph.toe, time);
  const double e = eph.eccentricity;
  const double a = eph.sqrt_a * eph.sqrt_a;
  const double n = std::sqrt(kEarthGravity / (a * a * a)) + kGpsPi * eph.delta_n;
  const double ek = EccentricAnomaly(kGpsPi * eph.m0 + n * tk, e);
  const double vk = std::atan2(std::sqrt(1 - e * e) * std::sin(ek), std::cos(ek) - e);
  const double phi = vk + kGpsPi * eph.omega;

  const double s2 = std::sin(2 * phi), c2 = std::cos(2 * phi);
  const double uk = phi + eph.cus * s2 + eph.cuc * c2;
  const double rk = a * (1 - e * std::cos(ek)) + eph.crs * s2 + eph.crc * c2;
  const double ik = kGpsPi * (eph.i0 + eph.i_dot * tk) + eph.cis * s2 + eph.cic * c2;
  const double x = rk * std::cos(uk), y = rk * std::sin(uk);
  const double node =
      kGpsPi * eph.omega0 + (kGpsPi * eph.omega_dot - kEarthRotation) * tk - kEarthRotation * eph.toe;

  const double tc = Since(eph.toc, time);
  return {
      {x * std::cos(node) - y * std::cos(ik) * std::sin(node),
       x * std::sin(node) + y * std::cos(ik) * std::cos(node), y * std::sin(ik)},
      eph.af0 + eph.af1 * tc + eph.af2 * tc * tc + kRelativistic * e * eph.sqrt_a * std::sin(ek) - eph.tgd};
}

Vector TurnedWithEarth(const Vector& v, double seconds) {
  const double angle = kEarthRotation * seconds;
  const double s = std::sin(angle), c = std::cos(angle);
  return {c * v.x + s * v.y, -s * v.x + c * v.y, v.z};
}

}  // namespace simulator
