#pragma once

namespace simulator {

/// Earth-centred, earth-fixed cartesian vector, in metres or metres per second.
struct Vector {
  double x = 0, y = 0, z = 0;
};

Vector operator+(const Vector& a, const Vector& b);
Vector operator-(const Vector& a, const Vector& b);
Vector operator*(double factor, const Vector& a);
double Length(const Vector& a);

/// Position on the WGS 84 ellipsoid: radians, south and west negative, height above the ellipsoid in metres.
struct Geodetic {
  double latitude = 0, longitude = 0, height = 0;
};

/// A vector in the local level frame of some place.
struct Level {
  double east = 0, north = 0, up = 0;
};

Vector ToVector(const Geodetic& position);
Geodetic ToGeodetic(const Vector& position);
Level ToLevel(const Vector& difference, const Geodetic& place);
Vector FromLevel(const Level& difference, const Geodetic& place);

inline constexpr double kPi = 3.14159265358979323846;
constexpr double Radians(double degrees) {
  return degrees * (kPi / 180);
}
constexpr double Degrees(double radians) {
  return radians * (180 / kPi);
}

}  // namespace simulator
