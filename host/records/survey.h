#pragma once

#include <map>
#include <optional>
#include <vector>

#include "host/records/epoch.h"

namespace host {

/// Mean and standard deviation of some values, as good after a billion of them as after ten.
class Spread {
 public:
  void Add(double value);
  long long Count() const { return count_; }
  double Mean() const { return mean_; }
  /// Of a sample. None of a single value.
  std::optional<double> Deviation() const;

 private:
  long long count_ = 0;
  double mean_ = 0.0;
  double squares_ = 0.0;  // of the distances from the mean, summed
};

/// What some fixes say of where a receiver stands that did not move. Metres, unless it says otherwise.
struct SurveyResult {
  long long fixes = 0;
  double latitude = 0.0, longitude = 0.0;  ///< Of the mean, in degrees.
  std::optional<double> height;            ///< Mean of the heights there were.
  std::optional<double> east, north, up;   ///< Standard deviations about the mean.
  double cep50 = 0.0, r95 = 0.0;           ///< Radii about the mean with half and 95 % of the fixes.
  std::optional<double> drms2;             ///< Twice the root of the mean squared distance.
};

/// The statistics of a receiver that stands still, of all its fixes and of each kind. They take as much
/// memory for days as for hours: means and deviations are of every fix, and the two radii of at least
/// kLeastKept of them, evenly spread over the time.
class Survey {
 public:
  static constexpr std::size_t kLeastKept = 8192;
  /// Farther off the mean no receiver's own noise takes one fix in twenty.
  static constexpr double kStill = 50.0;

  /// A fix, about the mean of all.
  struct Point {
    double east, north;
    int signal;
  };

  void Add(const PositionEpoch& fix);
  void Clear() { *this = Survey(); }

  long long Fixes() const { return all_.fixes; }
  /// Of all fixes. There is one.
  SurveyResult Result() const { return ResultOf(all_); }
  /// Of each kind, by SignalType.
  std::map<int, SurveyResult> ByKind() const;
  /// The fixes that are kept.
  std::vector<Point> Points() const;

 private:
  struct Cloud {
    void Add(const Point& fix, const std::optional<double>& height);

    long long fixes = 0;
    Spread east, north, up;
    std::vector<Point> kept;
    long long every = 1;  // one fix of this many is kept
  };

  SurveyResult ResultOf(const Cloud& cloud) const;

  // Places are metres from the first fix, by a scale that is that of its latitude.
  double latitude_ = 0.0, longitude_ = 0.0;
  Offset per_degree_{};
  Cloud all_;
  std::map<int, Cloud> kinds_;
};

/// Whether such fixes are those of a receiver that has moved.
bool HasMoved(const SurveyResult& result);

}  // namespace host
