#pragma once

#include <string>

#include "host/run/descriptor.h"

namespace host {

/// Watches the device of a run from the side: the library keeps silent about a port that is lost, and a
/// second descriptor on the same device tells.
class PortWatch {
 public:
  /// Made before the library opens the device, which it then holds for itself. An empty name watches nothing.
  explicit PortWatch(std::string device);

  /// For poll, which is to tell of a hang-up and of nothing else; -1 if there is none.
  int Descriptor() const { return descriptor_.Get(); }
  /// Takes note of what poll found.
  void OnEvents(short events);
  /// Where the device could not be opened twice its node is looked at instead; the caller asks once a second.
  bool NeedsLooking() const { return !device_.empty() && !descriptor_ && !lost_; }
  void Look();
  /// Lets go of the device.
  void Release() { descriptor_ = UniqueDescriptor(); }

  bool IsLost() const { return lost_; }

 private:
  const std::string device_;
  UniqueDescriptor descriptor_;
  bool lost_ = false;
};

}  // namespace host
