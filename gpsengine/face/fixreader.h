#pragma once

#include <chrono>
#include <numbers>
#include <optional>

#include "gpsengine/face/fix.h"

#pragma GCC visibility push(default)

namespace gps {

/// In a radian.
constexpr double kDegrees = 180.0 / std::numbers::pi;

/// A dilution of precision, unless the receiver has put something else where it knows none.
inline std::optional<double> KnownDilution(double dilution) {
  return dilution > 0.0 && dilution < 1e4 ? std::optional(dilution) : std::nullopt;
}
/// Whether m_dTimeOfDay holds a time. A receiver that has found none yet sends position sentences all the
/// same.
bool HasTimeOfDay(const CGPSData& data);

/// Reads the positions of a run out of its records: joins the sentences of one epoch, dates it, and tells
/// where a track breaks off.
class FixReader {
 public:
  /// The moment near which the records to come belong. Without one their moment of publication tells it.
  void SetReference(std::optional<Time> reference) { reference_ = reference; }
  /// What the record says. Of one without a position that is the dilutions, if it has them.
  Fix Read(const CGPSData& data);

 private:
  void ReadPosition(const CGPSData& data, Fix& fix);
  Time Date(const CGPSData& data);
  bool IsBehindGap(const Fix& fix);

  std::optional<Time> reference_, used_reference_;
  Optional<Time> last_time_;  // of the last epoch that had one
  Time last_published_{};
  bool last_was_fix_ = false;
  // The time that lay between the last two epochs, or may lie there at most at first.
  std::chrono::milliseconds step_ = std::chrono::seconds(75);
};

}  // namespace gps

#pragma GCC visibility pop
