#include "simulator/path.h"

#include <cmath>

#include "simulator/dice.h"

namespace simulator {

Path::Path(const Geodetic& start, bool moving, unsigned seed)
    : start_(start), origin_(ToVector(start)), moving_(moving) {
  Dice dice(seed);
  const auto turn = [&dice](double size, double period) {
    return Turn{size, 2 * kPi / dice.Between(0.95 * period, 1.05 * period), dice.Between(-kPi, kPi)};
  };
  loop_ = turn(1000, 700);
  sway_ = turn(150, 230);
  wave_ = turn(0.2, 40);
}

Level Path::Offset(double t) const {
  Level d;
  for (const Turn& turn : {loop_, sway_}) {
    d.east += turn.size * (std::cos(turn.phase + turn.rate * t) - std::cos(turn.phase));
    d.north += turn.size * (std::sin(turn.phase + turn.rate * t) - std::sin(turn.phase));
  }
  // The water is level all along the way, while the plane that east and north span leaves it.
  constexpr double kEarthRadius = 6371000;
  d.up = wave_.size * (std::sin(wave_.phase + wave_.rate * t) - std::sin(wave_.phase)) -
         (d.east * d.east + d.north * d.north) / (2 * kEarthRadius);
  return d;
}

Vector Path::Position(double t) const {
  return moving_ ? origin_ + FromLevel(Offset(t), start_) : origin_;
}

Vector Path::Velocity(double t) const {
  constexpr double kStep = 0.01;
  return (1 / (2 * kStep)) * (Position(t + kStep) - Position(t - kStep));
}

}  // namespace simulator
