#pragma once

#include <chrono>
#include <string>

#include "host/descriptor.h"

namespace host {

/// Watches the device of a run from the side. The library keeps silent about a port that is lost, and does not tell
/// bytes that make no message from no bytes at all; a second descriptor on the same device shows both.
class PortWatch {
 public:
  /// Made before the library opens the device, which it then holds for itself. An empty name watches nothing.
  explicit PortWatch(std::string device);

  /// For poll: the descriptor, -1 if there is none, and the events to wait for.
  int Descriptor() const { return descriptor_.Get(); }
  short Events() const;
  /// Takes note of what poll found.
  void OnEvents(short events);
  /// Where the device could not be opened twice its node is looked at instead; the caller asks once a second.
  bool NeedsLooking() const { return !device_.empty() && !descriptor_ && !lost_; }
  void Look();

  /// Lets go of the device.
  void Release() { descriptor_ = UniqueDescriptor(); }

  bool IsLost() const { return lost_; }
  /// Some byte has arrived.
  bool HasHeard() const { return heard_; }

 private:
  const std::string device_;
  UniqueDescriptor descriptor_;
  bool lost_ = false;
  bool heard_ = false;
};

}  // namespace host
