#pragma once

#include <optional>

#include "gpsengine/face/fixreader.h"
#include "gpsengine/sentences/positiontail.h"
#include "host/records/kinds.h"
#include "host/records/projection.h"
#include "host/run/face.h"

namespace host {

/// What a position sentence says, and what exports know besides.
struct PositionEpoch : Fix {
  PositionEpoch() = default;
  explicit PositionEpoch(const Fix& fix) : Fix(fix), height(height_msl) {}

  std::optional<double> height;           ///< Metres, above what is set up.
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
  bool HasFix() const { return HasPosition() && epoch.valid; }
};

/// Reads a record, to which the result refers.
Record ReadRecord(FixReader& reader, const CGPSData& data);

/// Metres from one place to another. Exact for the steps of a track, less so from one continent to another.
struct Offset {
  double east, north;
  double Length() const;
};
Offset OffsetOf(double latitude, double longitude, double to_latitude, double to_longitude);

}  // namespace host
