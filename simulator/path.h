#pragma once

#include "simulator/geodesy.h"

namespace simulator {

/// The way of the antenna: at rest, or a boat's wide loop at 4 to 14 m/s over gentle waves. A closed form, so
/// any moment can be asked for in any order.
class Path {
 public:
  /// Starts at `start` at time 0. The seed varies the loop.
  Path(const Geodetic& start, bool moving, unsigned seed);

  /// Where the antenna is, `seconds` after the start.
  Vector Position(double seconds) const;
  Vector Velocity(double seconds) const;

 private:
  // One turning component: `size` metres across, once round in 2 pi / `rate` seconds.
  struct Turn {
    double size, rate, phase;
  };
  Level Offset(double seconds) const;

  Geodetic start_;
  Vector origin_;
  bool moving_;
  Turn loop_, sway_, wave_;
};

}  // namespace simulator
