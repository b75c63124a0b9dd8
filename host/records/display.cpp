#include "host/records/display.h"

#include <cmath>
#include <cstdio>

#include "host/records/units.h"

namespace host {

namespace {

constexpr Unit kFeet{"ft", 1.0 / 0.3048};
constexpr Unit kKilometresAnHour{"km/h", 3.6};
constexpr Unit kMilesAnHour{"mph", 3600.0 / 1609.344};
constexpr Unit kKnots{"kn", 3600.0 / 1852.0};

// In the order of Units.
constexpr UnitSystem kSystems[] = {
    {{"m", 1.0}, {"km", 1e-3}, 10.0, kKilometresAnHour, {kKnots, kKilometresAnHour}},
    {kFeet, {"mi", 1.0 / 1609.344}, 1.0, kMilesAnHour, {kMilesAnHour, kKnots}},
    {kFeet, {"nmi", 1.0 / 1852.0}, 1.0, kKnots, {kKnots, kKilometresAnHour}},
};

struct Marks {
  const char *degree, *minute, *second, *gap;
};

std::string Write(double radians, AngleFormat format, char hemisphere, const Marks& marks) {
  const double degrees = std::isfinite(radians) ? std::fabs(radians) * kDegrees : 0.0;
  // Counted in the last place that is shown, so that no 60 comes of rounding.
  constexpr long long kMinute = 100'000, kSecond = 10'000;
  char text[400];  // a number of a record may be any
  switch (format) {
    case AngleFormat::minutes: {
      const long long parts = std::llround(degrees * 60 * kMinute);
      std::snprintf(text, sizeof text, "%3lld%s %02lld.%05lld%s%s%c", parts / (60 * kMinute), marks.degree,
                    parts / kMinute % 60, parts % kMinute, marks.minute, marks.gap, hemisphere);
      break;
    }
    case AngleFormat::seconds: {
      const long long parts = std::llround(degrees * 3600 * kSecond);
      std::snprintf(text, sizeof text, "%3lld%s %02lld%s %02lld.%04lld%s%s%c", parts / (3600 * kSecond),
                    marks.degree, parts / (60 * kSecond) % 60, marks.minute, parts / kSecond % 60,
                    parts % kSecond, marks.second, marks.gap, hemisphere);
      break;
    }
    case AngleFormat::degrees:
      std::snprintf(text, sizeof text, "%11.7f%s%s%c", degrees, marks.degree, marks.gap, hemisphere);
  }
  return text;
}

}  // namespace

const UnitSystem& SystemOf(Units units) {
  return kSystems[static_cast<int>(units)];
}

std::string AngleText(double radians, AngleFormat format, char positive, char negative) {
  return Write(radians, format, radians < 0.0 ? negative : positive, {"°", "'", "\"", " "});
}

std::string PlainAngleText(double radians, AngleFormat format, char positive, char negative) {
  return Write(radians, format, radians < 0.0 ? negative : positive, {"", "", "", ""});
}

}  // namespace host
