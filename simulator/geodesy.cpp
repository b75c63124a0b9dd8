#include "simulator/geodesy.h"

#include <cmath>

namespace simulator {
namespace {

constexpr double kSemiMajorAxis = 6378137.0;
constexpr double kFlattening = 1 / 298.257223563;
constexpr double kEccentricitySquared = kFlattening * (2 - kFlattening);

double PrimeVerticalRadius(double latitude) {
  const double s = std::sin(latitude);
  return kSemiMajorAxis / std::sqrt(1 - kEccentricitySquared * s * s);
}

}  // namespace

Vector operator+(const Vector& a, const Vector& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vector operator-(const Vector& a, const Vector& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vector operator*(double factor, const Vector& a) {
  return {factor * a.x, factor * a.y, factor * a.z};
}
double Length(const Vector& a) {
  return std::hypot(a.x, a.y, a.z);
}

Vector ToVector(const Geodetic& p) {
  const double n = PrimeVerticalRadius(p.latitude);
  const double equatorial = (n + p.height) * std::cos(p.latitude);
  return {equatorial * std::cos(p.longitude), equatorial * std::sin(p.longitude),
          (n * (1 - kEccentricitySquared) + p.height) * std::sin(p.latitude)};
}

Geodetic ToGeodetic(const Vector& v) {
  const double equatorial = std::hypot(v.x, v.y);
  Geodetic p{std::atan2(v.z, equatorial * (1 - kEccentricitySquared)), std::atan2(v.y, v.x), 0};
  for (int i = 0; i < 6; ++i) {  // near the ground each round gains more than two digits
    const double n = PrimeVerticalRadius(p.latitude);
    p.latitude = std::atan2(v.z + kEccentricitySquared * n * std::sin(p.latitude), equatorial);
  }
  const double n = PrimeVerticalRadius(p.latitude);
  const double s = std::sin(p.latitude), c = std::cos(p.latitude);
  p.height = equatorial * c + v.z * s - n * (1 - kEccentricitySquared * s * s);  // holds at the poles as well
  return p;
}

Level ToLevel(const Vector& d, const Geodetic& place) {
  const double sf = std::sin(place.latitude), cf = std::cos(place.latitude);
  const double sl = std::sin(place.longitude), cl = std::cos(place.longitude);
  return {-sl * d.x + cl * d.y, -sf * cl * d.x - sf * sl * d.y + cf * d.z,
          cf * cl * d.x + cf * sl * d.y + sf * d.z};
}

Vector FromLevel(const Level& d, const Geodetic& place) {
  const double sf = std::sin(place.latitude), cf = std::cos(place.latitude);
  const double sl = std::sin(place.longitude), cl = std::cos(place.longitude);
  return {-sl * d.east - sf * cl * d.north + cf * cl * d.up, cl * d.east - sf * sl * d.north + cf * sl * d.up,
          cf * d.north + sf * d.up};
}

}  // namespace simulator
