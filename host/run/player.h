#pragma once

#include <chrono>
#include <limits>
#include <optional>
#include <string>

#include "gpsengine/engine/gpsengine.h"
#include "host/run/dating.h"
#include "host/run/recording.h"
#include "host/run/unpacedclock.h"

namespace host {

/// Plays a recording once, at the pace of the times in it or a multiple of that. A recording without times
/// goes at the pace of its line. The engine's own playback has one pace, a line every half second.
class Player {
 public:
  using Clock = std::chrono::steady_clock;
  /// As fast as it goes.
  static constexpr double kMax = std::numeric_limits<double>::infinity();

  /// `speed` is a multiple of the recording's pace, `baud` the rate of its line in bits a second. Throws a
  /// Failure that names the file if it cannot be read. `sink` outlives the player.
  Player(const std::string& path, double speed, int baud, Sink& sink);

  /// When Play has something to do.
  Clock::time_point NextAt() const { return due_; }
  bool IsAtEnd() const { return line_.empty(); }
  const Recording& Source() const { return recording_; }
  /// Hands the engine what is due, some of it if that is much.
  void Play(CGPSEngine& engine);

 private:
  void ReadLine();
  void Pace();
  void Wait(double seconds);

  const UnpacedClock clock_;
  Recording recording_;
  const double speed_, seconds_per_byte_;
  const bool timed_;
  Dating dating_;
  std::string bytes_;           // read ahead
  std::size_t taken_ = 0;       // of them
  std::string line_;            // the next one to be played
  std::optional<double> time_;  // of day, the latest that a sentence has told
  Clock::time_point due_ = Clock::now();
};

}  // namespace host
