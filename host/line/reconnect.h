#pragma once

#include <chrono>
#include <string>

#include "host/run/waiter.h"

namespace host {

/// Waits for a port that was lost to come back, and tells on standard error what it waits for. It knows the
/// port by its name under /dev/serial/by-id, if it has one, under which it is found whatever its number is
/// then.
class Reconnect {
 public:
  /// To be made while the port is there.
  explicit Reconnect(const std::string& device, Deadline::Clock::duration interval = std::chrono::seconds(1));

  /// The name to open the port by.
  const std::string& Name() const { return name_; }
  /// The port was lost, or did not open after all.
  void Begin();
  bool IsWaiting() const { return look_.IsSet(); }
  /// When to call IsBack.
  const Deadline& NextLook() const { return look_; }
  /// Whether the port can be opened now. Looks once an interval, and is false in between. Who opens it then
  /// calls either Begin or End.
  bool IsBack();
  /// The port is open again.
  void End();

 private:
  const std::string name_;
  const Deadline::Clock::duration interval_;
  Deadline look_;
  Deadline::Clock::time_point lost_;
  bool told_ = false;
  std::string reason_;  // why the port does not open though it is there, as was told
};

}  // namespace host
