#pragma once

#include <memory>
#include <string>

#include "gpsengine/engine/gpsengine.h"
#include "host/records/geoid.h"
#include "host/run/failure.h"
#include "host/run/portwatch.h"
#include "simulator/simulator.h"

namespace host {

/// The number under which the library opens the port of a run.
constexpr int kPort = 1;

/// The far end of a run's serial line: a device, or a simulated receiver of the same model on a
/// pseudo-terminal. Makes COM1 that device. Outlives the engine, whose end still writes to the line.
class Source {
 public:
  /// `device` empty asks for the simulated receiver.
  Source(const std::string& device, CGPSReceiver& receiver);

  const std::string& Device() const { return device_; }
  bool IsSimulated() const { return runner_ != nullptr; }
  /// Tells the user that the receiver of this model is a simulated one, if it is.
  void Tell(const std::string& model) const;
  /// Sets a simulated receiver going.
  void Start();

 private:
  std::unique_ptr<simulator::PtyRunner> runner_;
  std::string device_;
};

/// Sets a receiver up as the command line has it, at the rate kept for its model unless `baud` is above 0,
/// which is not kept yet, and selects it. With `host_moves_bytes` its port stays closed.
void SelectReceiver(CGPSEngine& engine, CGPSReceiver& receiver, int baud, Geoid geoid = Geoid::none,
                    double antenna_height = 0.0, bool host_moves_bytes = false);

/// Starts the engine on the source's port. Throws a Failure that says why the port does not open.
void StartEngine(CGPSEngine& engine, const Source& source, PortWatch& watch);

/// Starts the engine, whose receiver has been selected, on a recording. Throws a Failure if the file cannot
/// be played.
void StartPlayback(CGPSEngine& engine, const std::string& file);

/// The failure of a run in which no message was understood, whether or not bytes were heard at the receiver's
/// rate.
Failure NothingUnderstood(const std::string& device, double seconds, bool heard, CGPSReceiver& receiver);
/// "10 s".
std::string Seconds(double seconds);

/// The failure of a run whose port went away. `could_reconnect` names the option that would have waited.
Failure PortLost(const std::string& device, bool could_reconnect = false);

}  // namespace host
