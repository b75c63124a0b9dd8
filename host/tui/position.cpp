#include "host/tui/position.h"

#include <cmath>

#include "host/records/units.h"
#include "host/tui/canvas.h"

namespace host {

namespace {}  // namespace

std::string AngleText(double radians, PositionFormat format, char positive, char negative) {
  const double degrees = std::isfinite(radians) ? std::fabs(radians) * kDegrees : 0.0;
  const char hemisphere = radians < 0.0 ? negative : positive;
  // Counted in the last place that is shown, so that no 60 comes of rounding.
  constexpr long long kMinute = 100'000, kSecond = 10'000;
  switch (format) {
    case PositionFormat::minutes: {
      const long long parts = std::llround(degrees * 60 * kMinute);
      return Print("%3lld° %02lld.%05lld' %c", parts / (60 * kMinute), parts / kMinute % 60, parts % kMinute,
                   hemisphere);
    }
    case PositionFormat::seconds: {
      const long long parts = std::llround(degrees * 3600 * kSecond);
      return Print("%3lld° %02lld' %02lld.%04lld\" %c", parts / (3600 * kSecond), parts / (60 * kSecond) % 60,
                   parts / kSecond % 60, parts % kSecond, hemisphere);
    }
    case PositionFormat::degrees:
      break;
  }
  return Print("%11.7f° %c", degrees, hemisphere);
}

}  // namespace host
