#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/records/projection.h"

namespace host {

/// The units in which people read lengths and speeds.
enum class Units { metric, imperial, nautical };

struct Unit {
  std::string_view name;
  double per_metre;  ///< So many of it are a metre, or a metre a second.
};

/// The units that go together.
struct UnitSystem {
  Unit length, distance;  ///< For what is seen from close by, and for ways.
  double far;             ///< From so many of it on a way is told in the unit of distances.
  Unit speed;
  Unit both_speeds[2];  ///< Where there is room for two.
};
const UnitSystem& SystemOf(Units units);

/// How latitudes and longitudes are written.
enum class AngleFormat { degrees, minutes, seconds };
constexpr int kAngleFormats = 3;

/// An angle as "47.6198855° N", "47° 37.19313' N" or "47° 37' 11.5878\" N", every one of a format as wide as
/// the others.
std::string AngleText(double radians, AngleFormat format, char positive, char negative);
/// The same without marks: "47.6198855N", "47 37.19313N" or "47 37 11.5878N".
std::string PlainAngleText(double radians, AngleFormat format, char positive, char negative);

/// How places and numbers are written for people. What programs read stays in metres and degrees.
struct Display {
  Units units = Units::metric;
  std::optional<AngleFormat> angles;       ///< None: degrees, or what was chosen on the screen.
  std::shared_ptr<Projection> projection;  ///< Eastings and northings are wanted too; null for none.

  const UnitSystem& System() const { return SystemOf(units); }
  AngleFormat Angles() const { return angles.value_or(AngleFormat::degrees); }
};

}  // namespace host
