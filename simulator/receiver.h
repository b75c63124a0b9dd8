#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/geodesy.h"
#include "simulator/gpstime.h"

namespace simulator {

/// How a simulated receiver is to be. The default is reproducible to the byte.
struct Options {
  std::string model = "Other";     ///< display name, one of Models()
  bool gga_only = false;           ///< leaves the factory with GGA alone, instead of the model's usual set
  double rate_hz = 1;              ///< epochs a second, above 0 and up to 20, where no command says otherwise
  bool silent = false;             ///< sends nothing at all, answers and acknowledgements included
  bool moving = true;              ///< along a path; at rest at the start position if false
  double latitude = 47.62;         ///< degrees, of the start
  double longitude = 9.40;         ///< degrees, of the start
  double height = 445.0;           ///< metres above the ellipsoid, of the start
  double geoid_separation = 47.9;  ///< metres, everywhere
  std::chrono::sys_seconds start_utc  ///< when the run starts
      = std::chrono::sys_days{std::chrono::year{2024} / 5 / 14} + std::chrono::hours{8};
  unsigned seed = 1;  ///< varies the path, the constellation and the receiver's clock
};

/// What is so, for a test to compare with what was reported.
struct Truth {
  GpsTime time;
  Vector position, velocity;  ///< of the antenna
  Geodetic geodetic;
  double clock_offset = 0;  ///< seconds that the receiver's clock is ahead of GPS time
  double clock_drift = 0;   ///< seconds a second
};

/// A GPS receiver at the far end of a serial line, without the line: no thread, no real time. Not for use by
/// two threads at once, except TruthAt().
class Receiver {
 public:
  virtual ~Receiver() = default;

  /// Takes what the host wrote, in pieces of any size. Unfinished lines and frames wait for their rest.
  virtual void Receive(std::string_view bytes) = 0;

  /// Moves simulated time on and gives what the receiver sends meanwhile: answers first, then what falls due.
  /// Advance(0) gives pending answers alone. Epochs fall on whole multiples of their interval after the
  /// start, the first one interval after it.
  virtual std::string Advance(double seconds) = 0;

  /// Simulated seconds until Advance() could have something to give; 0 if it has already.
  virtual double NextOutputIn() const = 0;

  /// Lines that the language does not know, with a reason, since the last call.
  virtual std::vector<std::string> TakeComplaints() = 0;

  /// Takes the power away and gives it back: what was not saved is lost, and booting takes a moment of
  /// silence.
  virtual void PowerCycle() = 0;

  /// Paced, messages follow each other as slowly as a line at Baud() carries them, and a burst that is not
  /// through at the next epoch goes out there in one piece. Otherwise, as at the start, all that is due goes
  /// out at once.
  virtual void SetPaced(bool paced) = 0;

  /// The rate at which the receiver sends and listens.
  virtual int Baud() const = 0;

  /// Simulated time now.
  virtual GpsTime Now() const = 0;

  /// What is so at a moment of GPS time (not of the receiver's clock). Thread-safe.
  virtual Truth TruthAt(const GpsTime& time) const = 0;
};

/// The display names of the models, in the order of the library's list.
const std::vector<std::string>& Models();

/// Throws std::invalid_argument, naming the option, if one is out of its range; an unknown model's text lists
/// those that exist.
std::unique_ptr<Receiver> MakeReceiver(const Options& options);

}  // namespace simulator
