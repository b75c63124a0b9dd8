#pragma once

#include <vector>

#include "simulator/path.h"
#include "simulator/receiver.h"
#include "simulator/sky.h"

namespace simulator {

/// What a receiver measures of one satellite at one reading of its own clock. No atmosphere, no noise: an
/// exact solution exists, and it is the truth.
struct Observation {
  View view;
  double pseudorange = 0;  ///< metres, the receiver's and the satellite's clock offset in it
  double phase = 0;        ///< cycles of L1, growing with the range, ahead of it by a whole number
  double doppler = 0;      ///< Hz, positive while the satellite comes nearer
};

/// The truth that every part of a receiver reports from: antenna, satellites and the receiver's clock.
/// Times are seconds of GPS time since the start of the run. Immutable, so thread-safe.
class World {
 public:
  explicit World(const Options& options);

  GpsTime TimeAt(double seconds) const { return start_ + seconds; }
  double SecondsAt(const GpsTime& time) const { return time - start_; }
  Truth TruthAt(double seconds) const;
  std::vector<View> InView(double seconds, double mask_degrees) const;
  Ephemeris EphemerisAt(int prn, double seconds) const { return sky_.EphemerisAt(prn, TimeAt(seconds)); }

  /// The true time at which the receiver's clock shows that many seconds since the start.
  double TrueSeconds(double receiver_seconds) const;

  /// Measurements at a reading of the receiver's clock, the `most` highest satellites at or above the mask.
  std::vector<Observation> Observe(double receiver_seconds, double mask_degrees, std::size_t most) const;

 private:
  double Pseudorange(int prn, double receiver_seconds) const;
  double ClockOffset(double seconds) const;
  double ClockDrift(double seconds) const;

  GpsTime start_;
  Path path_;
  Sky sky_;
  double clock_phase_;
};

}  // namespace simulator
