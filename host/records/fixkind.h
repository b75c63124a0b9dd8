#pragma once

#include <iterator>
#include <string_view>

#include "gpsengine/records/gpsdata.h"

namespace host {

/// A kind of fix, by the name that people read everywhere, and as the forms have it that others read.
struct FixKind {
  std::string_view name;
  int gpsd;                ///< The status of a TPV; 0 for a kind that gpsd has none for.
  std::string_view gpx;    ///< The element "fix"; empty for a position that is not of satellites alone.
  char gga, rmc;           ///< The quality indicator of a GGA, and the mode of an RMC.
  std::string_view style;  ///< A colour of the report's style sheet.
};

/// The kind of a SignalType. A number that is none is an unknown kind.
inline const FixKind& FixKindOf(int signal) {
  static constexpr FixKind kKinds[] = {
      {"no fix", 0, "", '0', 'N', "none"},         {"GPS", 1, "3d", '1', 'A', "gps"},
      {"DGPS", 2, "dgps", '2', 'D', "dgps"},       {"estimated", 5, "", '6', 'E', "other"},
      {"manual", 7, "", '7', 'M', "other"},        {"RTK code", 2, "dgps", '2', 'D', "float"},
      {"RTK fixed", 3, "dgps", '4', 'R', "fixed"}, {"RTK float", 4, "dgps", '5', 'F', "float"},
      {"processed", 0, "dgps", '2', 'D', "dgps"},  {"SBAS", 2, "dgps", '9', 'D', "sbas"},
      {"unknown", 0, "", '1', 'A', "other"},
  };
  static_assert(std::size(kKinds) == UDF_SIGNAL_UNKNOWN + 1);
  return kKinds[signal >= 0 && signal < UDF_SIGNAL_UNKNOWN ? signal : UDF_SIGNAL_UNKNOWN];
}

}  // namespace host
