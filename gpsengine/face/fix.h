#pragma once

#include <iosfwd>
#include <string_view>

#include "gpsengine/records/gpsdata.h"
#include "gpsengine/sentences/optional.h"

#pragma GCC visibility push(default)

namespace gps {

/// What a position sentence says. What it does not say is none.
struct Fix {
  bool valid = false;            ///< The receiver has found its position, and that lies on the earth.
  int signal = UDF_SIGNAL_NONE;  ///< How it was found, a SignalType: UDF_SIGNAL_GPS, UDF_SIGNAL_RTK_FIXED …
  Optional<Time> time;           ///< UTC. The date is that of the recording, or else this computer's.
  double latitude = 0.0;         ///< Degrees, south negative.
  double longitude = 0.0;        ///< Degrees, west negative.
  Optional<double> height_msl;   ///< Metres above mean sea level, less the antenna's height.
  Optional<double> speed;        ///< Metres a second over ground.
  Optional<double> course;       ///< Degrees from north, clockwise; none at rest.
  Optional<double> hdop;         ///< Horizontal dilution of precision.
  Optional<double> pdop;         ///< Dilution of precision in three dimensions.
  Optional<double> vdop;         ///< Vertical dilution of precision.
  int used = 0;                  ///< Satellites that the position is made of.
  int in_view = 0;               ///< Satellites in view.
  Optional<double> strength;     ///< Mean signal of the used satellites, as the receiver gives it.
  Optional<double> time_of_day;  ///< Seconds since midnight UTC, as the sentence states them.
  bool repeats = false;          ///< Another sentence has told of this moment already.
  bool starts_segment = false;   ///< After a gap: the way from the last fix to this one is not known.
};

/// What a SignalType is called: "no fix", "GPS", "DGPS", "RTK fixed" …
std::string_view NameOfSignal(int signal);

/// Writes "2024-05-14T08:00:01.000Z 47.6198855 9.3999772 397.1 m GPS", whatever the stream's precision.
std::ostream& operator<<(std::ostream& out, const Fix& fix);

}  // namespace gps

#pragma GCC visibility pop
