#pragma once

#include <string>

#include "host/run/deadline.h"

namespace host {

/// Whether there is a device of that name.
bool IsThere(const std::string& port);

/// Waits for a port to come, or to come back, and tells on standard error what it waits for.
class Reconnect {
 public:
  explicit Reconnect(Deadline::Clock::duration interval) : interval_(interval) {}

  /// The port of that name was lost, or has not been there yet, or did not open after all.
  void Begin(const std::string& name, bool was_there);
  bool IsWaiting() const { return look_.IsSet(); }
  /// What is waited for was lost, and not missing from the start.
  bool WasThere() const { return was_there_; }
  /// When to call IsBack.
  const Deadline& NextLook() const { return look_; }
  /// Whether the port can be opened now. Looks once an interval, and is false in between. Who opens it then
  /// calls either Begin or End.
  bool IsBack();
  /// The port is open.
  void End();

 private:
  const Deadline::Clock::duration interval_;
  std::string name_;
  Deadline look_;
  Deadline::Clock::time_point since_;
  bool told_ = false, was_there_ = false;
  std::string reason_;  // why the port does not open though it is there, as was told
};

}  // namespace host
