#pragma once

#include <string>

#include "gpsengine/sentences/moment.h"
#include "host/records/display.h"
#include "host/run/face.h"

namespace host {

// How a page for people writes what it tells.

/// A number with the given number of decimals.
std::string Number(double value, int decimals);
/// The digits in groups of three.
std::string Whole(long long value);
/// A length, or a speed, in a unit.
std::string In(const Unit& unit, double value, int decimals);
/// How long a way is.
std::string Length(double metres, const UnitSystem& units);
/// "80.0 %"
std::string Percent(long long part, long long whole);
/// How long something took.
std::string Span(double seconds);
std::string Time(Moment moment);
/// A latitude or a longitude in degrees.
std::string Angle(double degrees, AngleFormat format, char positive, char negative);
std::string Place(double latitude, double longitude, AngleFormat format);
struct Grid {
  std::string easting, northing;
};
Grid GridOf(double latitude, double longitude, Projection& projection);

}  // namespace host
