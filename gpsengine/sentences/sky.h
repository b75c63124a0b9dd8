#pragma once

#include <optional>
#include <vector>

#include "gpsengine/sentences/constellations.h"
#include "gpsengine/sentences/optional.h"

#pragma GCC visibility push(default)

namespace gps {

/// A satellite in view. What its receiver does not know is none.
struct Satellite {
  SatelliteId id = {};           ///< Which one.
  Optional<int> elevation = {};  ///< Degrees above the horizon.
  Optional<int> azimuth = {};    ///< Degrees from north, clockwise.
  Optional<int> signal = {};     ///< Of its best band, as the receiver gives it; none if not tracked.
  bool used = false;             ///< By the fix, as far as the receiver tells that.

  /// Whether all of it is the same.
  bool operator==(const Satellite&) const = default;
};

/// The satellites of an epoch.
struct Sky {
  /// What one sky holds at most.
  static constexpr std::size_t kMost = 128;

  Optional<double> time_of_day;       ///< Seconds since midnight UTC.
  bool has_list = true;               ///< Its receiver tells of satellites, and not of their count alone.
  std::vector<Satellite> satellites;  ///< By system and number.
  bool has_used = false;              ///< Its receiver has told which ones it uses.
  int in_view = 0;                    ///< How many.
  Optional<int> used;                 ///< How many.
  /// Dilutions of precision: horizontal, in three dimensions, vertical.
  ///@{
  Optional<double> hdop, pdop, vdop;
  ///@}

  /// How many a position used that states `stated`, which many receivers cut at twelve.
  int UsedBy(int stated) const;
  /// The mean of the signals of those that are used.
  std::optional<double> MeanSignal() const;
};

}  // namespace gps

#pragma GCC visibility pop
