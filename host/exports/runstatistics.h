#pragma once

#include <limits>
#include <map>
#include <optional>
#include <vector>

#include "gpsengine/sentences/sky.h"
#include "host/exports/plane.h"
#include "host/exports/sketch.h"
#include "host/records/epoch.h"
#include "host/records/survey.h"
#include "host/run/face.h"

namespace host {

/// Least, mean and greatest of some values.
struct Range {
  long long count = 0;
  double sum = 0.0;
  double least = std::numeric_limits<double>::infinity();
  double most = -std::numeric_limits<double>::infinity();

  void Add(double value);
  void Add(const std::optional<double>& value) {
    if (value) Add(*value);
  }
  /// Takes in the values of another.
  void Add(const Range& other);
  double Mean() const { return sum / static_cast<double>(count); }
};

/// A value over time in a bounded number of pieces, whose least and greatest values stay as they were however
/// long the run is.
class Envelope {
 public:
  struct Piece {
    Moment start, end;
    bool broken;  ///< Nothing leads here from the piece before.
    Range values;
  };

  void Add(Moment time, double value, bool broken);
  const std::vector<Piece>& Pieces() const { return pieces_; }
  const Range& All() const { return all_; }

 private:
  void Merge(bool over_breaks);

  std::vector<Piece> pieces_;
  long long per_piece_ = 1;  // values that a piece takes
  Range all_;
};

/// For how long the receiver had which kind of fix.
struct SignalSpan {
  Moment start, end;
  int signal;
  std::map<int, std::chrono::milliseconds> mixed =
      {};  ///< How long each was there in a time of several; empty for one.
};

/// Where a satellite was seen, and how well.
struct SatelliteTrail {
  struct Place {
    double elevation, azimuth;  ///< Degrees.
    bool operator==(const Place&) const = default;
  };
  void Add(const Place& place);

  std::vector<Place> places;  ///< Some degrees apart; of several days the last ones.
  Place last{};
  long long seen = 0, used = 0;
  Range strength;  ///< While it was tracked.
};

/// What is told of a run: bounded, however long that is.
struct RunStatistics {
  void Add(const PositionEpoch& epoch);
  void AddSatellites(const Sky& sky);

  std::optional<Moment> start, end;  ///< Of the epochs.
  std::map<int, long long> epochs;   ///< By SignalType; UDF_SIGNAL_NONE are those without a fix.
  long long fixes = 0, segments = 0;
  bool undated = false;   ///< Some epochs have the date of the day on which they were read.
  double distance = 0.0;  ///< Metres, in steps of one metre and more.
  double moving = 0.0;    ///< Seconds in which a speed was told that is not 0.
  std::chrono::milliseconds longest_gap{0};
  Envelope height, speed, used, strength;
  Range in_view, hdop, pdop, vdop;
  Sketch track;  ///< From the first fix.
  std::vector<SignalSpan> signals;
  std::map<SatelliteId, SatelliteTrail> satellites;
  std::optional<PositionEpoch> first_fix, last_fix;
  Survey survey;

 private:
  void AddFix(const PositionEpoch& epoch);
  void AddSignal(const PositionEpoch& epoch, bool paused);
  void MergeSpans();

  std::optional<Plane> plane_;            // about the first fix
  std::chrono::milliseconds span_{1000};  // what is drawn as one kind of fix
  long long of_segment_ = 0;              // fixes of the one at hand
  std::optional<PositionEpoch> anchor_;   // from which the next step of the distance is measured
};

}  // namespace host
