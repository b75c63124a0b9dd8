#include "gpsengine/face/fix.h"

#include <iterator>

#include "gpsengine/face/words.h"

namespace gps {

std::string_view NameOfSignal(int signal) {
  static constexpr std::string_view kNames[] = {"no fix",    "GPS",      "DGPS",      "estimated",
                                                "manual",    "RTK code", "RTK fixed", "RTK float",
                                                "processed", "SBAS",     "unknown"};
  static_assert(std::size(kNames) == UDF_SIGNAL_UNKNOWN + 1);
  return kNames[signal >= 0 && signal < UDF_SIGNAL_UNKNOWN ? signal : UDF_SIGNAL_UNKNOWN];
}

std::ostream& operator<<(std::ostream& out, const Fix& fix) {
  out << fix.time << Print(" %.7f %.7f ", fix.latitude, fix.longitude);
  out << (fix.height_msl ? Print("%.1f m ", *fix.height_msl) : "- ");
  return out << NameOfSignal(fix.signal);
}

}  // namespace gps
