#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#pragma GCC visibility push(default)

namespace gps {

/// When the lines of a recording are due that is played at the pace of the times in it, or a multiple of
/// that. One without times goes at the pace of its line.
class Pacer {
 public:
  using Clock = std::chrono::steady_clock;  ///< By which it is played.

  /// `speed` is the multiple. The head of the recording shows whether there are times; `baud` is the rate of
  /// the line that it came from.
  Pacer(double speed, std::string_view head, int baud);
  /// When the line is due that follows the last one. The first one is due at once.
  Clock::time_point DueOf(std::string_view line);

 private:
  void Wait(double seconds);

  const double speed_;
  const bool timed_;
  const double seconds_per_byte_;
  std::optional<double> time_;  // of day, the latest that a sentence has told
  Clock::time_point due_ = Clock::now();
};

}  // namespace gps

#pragma GCC visibility pop
