#pragma once

#include <optional>

#include "gpsengine/records/gpsdata.h"
#include "host/records/kinds.h"
#include "host/records/projection.h"
#include "host/sentences/moment.h"
#include "host/sentences/positiontail.h"

namespace host {

/// What a position sentence says, in the units of people and of files that others read.
struct PositionEpoch {
  std::optional<double> time_of_day;  ///< Seconds, as the sentence states them; none if it states none.
  std::optional<Moment> time;         ///< The same with a date.
  bool fix = false;                   ///< The position is one, and lies on the earth.
  bool repeats = false;               ///< Another sentence has told of this epoch's fix already.
  bool starts_segment = false;        ///< After a gap: the way from the last fix to this one is not known.
  int signal = UDF_SIGNAL_NONE;
  double latitude = 0.0, longitude = 0.0;  ///< Degrees, south and west negative.
  std::optional<double> height;            ///< Metres, above what is set up.
  std::optional<double> height_msl;        ///< Metres above mean sea level.
  std::optional<double> speed;             ///< Metres a second.
  std::optional<double> course;            ///< Degrees from north, clockwise; none at rest.
  std::optional<double> hdop, pdop, vdop;  ///< Of a record without a position too.
  int used = 0, in_view = 0;               ///< Satellites.
  std::optional<double> strength;          ///< Mean signal of those that are used.
  // What exports know besides.
  PositionTail tail;                      ///< What else its sentence says, where that is known.
  std::optional<Projection::Place> grid;  ///< In metres, where a reference system is wanted.
  int segment = 0;                        ///< Of the run, from 1 on.
  bool undated = false;                   ///< Nothing tells the date of the recording.
};

/// A record that the library has published, read once for all who take it.
struct Record {
  const CGPSData& data;  ///< As it came, for what only one needs.
  Kinds kinds;           ///< What of it is to be shown. Whole records are shown whole.
  PositionEpoch epoch;   ///< What its position says, if it has the kind "fix".

  bool HasPosition() const { return kinds.Has(Kind::fix); }
  bool HasFix() const { return HasPosition() && epoch.fix; }
};

/// A dilution of precision, unless the receiver has put something else where it knows none.
inline std::optional<double> KnownDilution(double dilution) {
  return dilution > 0.0 && dilution < 1e4 ? std::optional(dilution) : std::nullopt;
}
/// Whether m_dTimeOfDay holds a time. A receiver that has found none yet sends position sentences all the
/// same.
bool HasTimeOfDay(const CGPSData& data);

/// Metres from one place to another. Exact for the steps of a track, less so from one continent to another.
struct Offset {
  double east, north;
  double Length() const;
};
Offset OffsetOf(double latitude, double longitude, double to_latitude, double to_longitude);

/// Reads records: joins the sentences of one epoch, dates it, and tells where a track breaks off.
class EpochReader {
 public:
  /// The moment near which the records to come belong. Without one their moment of publication tells it.
  void SetReference(std::optional<Moment> reference) { reference_ = reference; }
  /// The record refers to `data`.
  Record Read(const CGPSData& data);

 private:
  void ReadPosition(const CGPSData& data, PositionEpoch& epoch);
  Moment Date(const CGPSData& data);
  bool IsBehindGap(const PositionEpoch& epoch);

  std::optional<Moment> reference_, used_reference_;
  std::optional<Moment> last_time_;  // of the last epoch that had one
  Moment last_published_ = 0;
  bool last_was_fix_ = false;
  Moment step_ = 75'000;  // the time that lay between the last two epochs, or may lie there at most at first
};

}  // namespace host
