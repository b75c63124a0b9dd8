#pragma once

#include <random>

namespace simulator {

/// Numbers that a seed fixes on every platform, which the distributions of the standard library do not
/// promise.
class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}

  double Between(double low, double high) {
    return low + (high - low) * (static_cast<double>(engine_()) / 4294967296.0);
  }

 private:
  std::mt19937 engine_;
};

}  // namespace simulator
