#pragma once

#include <string>
#include <vector>

namespace host {

/// The span of an axis, and where its labels stand.
struct Axis {
  struct Tick {
    double value;
    std::string label;
  };
  double low = 0.0, high = 1.0;
  double step = 1.0;
  std::vector<Tick> ticks;

  /// 0 at the low end, 1 at the high one.
  double Part(double value) const { return (value - low) / (high - low); }
};

/// The greatest of 1, 2 and 5 times a power of ten that is no greater than `value`, which is above 0.
double RoundDown(double value);
/// As few decimals as tell multiples of `step` apart.
int DecimalsOf(double step);

/// An axis from a round number at or below `low` to one at or above `high`, with about so many steps, and
/// with no step below `least_step`.
Axis RoundAxis(double low, double high, int steps, double least_step);
/// The same, but as long as it is told to be: the ticks alone are round.
Axis ExactAxis(double low, double high, int steps);
}  // namespace host
