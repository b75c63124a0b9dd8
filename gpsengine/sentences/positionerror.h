#pragma once

#include <optional>

#include "gpsengine/sentences/fields.h"

#pragma GCC visibility push(default)

namespace gps {

/// How far off a receiver believes its position to be, which it tells in a GST sentence: one sigma, in
/// metres.
struct PositionError {
  std::optional<double> time_of_day;  ///< Seconds.
  std::optional<double> ranges;       ///< The residuals of the ranges.
  /// The ellipse of the error, and the degrees from north of its longer axis.
  ///@{
  std::optional<double> major, minor, orientation;
  ///@}
  /// To the north, to the east and upwards.
  ///@{
  std::optional<double> latitude, longitude, height;
  ///@}
};

/// None for another sentence.
std::optional<PositionError> PositionErrorOf(const Fields& sentence);

}  // namespace gps

#pragma GCC visibility pop
