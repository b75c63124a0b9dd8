#pragma once

#include <iterator>
#include <string_view>

#include "gpsengine/records/gpsdata.h"

namespace host {

/// A kind of fix as the forms have it that others read.
struct FixKind {
  int gpsd;                ///< The status of a TPV; 0 for a kind that gpsd has none for.
  std::string_view gpx;    ///< The element "fix"; empty for a position that is not of satellites alone.
  char gga, rmc;           ///< The quality indicator of a GGA, and the mode of an RMC.
  int rtklib;              ///< The quality in RTKLIB's solutions.
  std::string_view style;  ///< A colour of the report's style sheet.
};

/// The kind of a SignalType. A number that is none is an unknown kind.
inline const FixKind& FixKindOf(int signal) {
  static constexpr FixKind kKinds[] = {
      {0, "", '0', 'N', 0, "none"},      {1, "3d", '1', 'A', 5, "gps"},     {2, "dgps", '2', 'D', 4, "dgps"},
      {5, "", '6', 'E', 7, "other"},     {7, "", '7', 'M', 0, "other"},     {2, "dgps", '2', 'D', 4, "float"},
      {3, "dgps", '4', 'R', 1, "fixed"}, {4, "dgps", '5', 'F', 2, "float"}, {0, "dgps", '2', 'D', 4, "dgps"},
      {2, "dgps", '9', 'D', 3, "sbas"},  {0, "", '1', 'A', 5, "other"},
  };
  static_assert(std::size(kKinds) == UDF_SIGNAL_UNKNOWN + 1);
  return kKinds[signal >= 0 && signal < UDF_SIGNAL_UNKNOWN ? signal : UDF_SIGNAL_UNKNOWN];
}

}  // namespace host
