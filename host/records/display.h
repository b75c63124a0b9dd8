#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/records/projection.h"
#include "host/records/units.h"

namespace host {

/// How latitudes and longitudes are written.
enum class AngleFormat { degrees, minutes, seconds };
constexpr int kAngleFormats = 3;

/// A latitude or a longitude in degrees as "47.6198855° N", "47° 37.19313' N" or "47° 37' 11.5878\" N", every
/// one of a format as wide as the others.
std::string MarkedAngle(double degrees, AngleFormat format, char positive, char negative);
/// The same without marks: "47.6198855N", "47 37.19313N" or "47 37 11.5878N".
std::string PlainAngle(double degrees, AngleFormat format, char positive, char negative);

/// The time of day of a moment in seconds since 1970, or of a time of day, as "08:15:30".
std::string TimeText(std::int64_t seconds);
/// Appends "08:15:30.25".
void AppendTimeOfDay(std::string& out, double seconds);
/// Appends a finite number with that many decimals, in no fewer columns than `width`.
void AppendPadded(std::string& out, double value, int decimals, std::size_t width);

/// How places and numbers are written for people. What programs read stays in metres and degrees.
struct Display {
  Units units = Units::metric;
  std::optional<AngleFormat> angles;       ///< None: degrees, or what was chosen on the screen.
  std::shared_ptr<Projection> projection;  ///< Eastings and northings are wanted too; null for none.

  const UnitSystem& System() const { return SystemOf(units); }
  AngleFormat Angles() const { return angles.value_or(AngleFormat::degrees); }
};

}  // namespace host
