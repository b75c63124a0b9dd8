#pragma once

#include <string>

#include "host/line/port.h"
#include "host/run/deadline.h"

namespace host {

/// Waits for a port to come, or to come back, and tells on standard error what it waits for. An address is
/// tried after pauses that grow for as long as it does not stay open.
class Reconnect {
 public:
  /// `interval` is the pause, or the first one.
  explicit Reconnect(Deadline::Clock::duration interval) : interval_(interval), pause_(interval) {}

  /// The port was lost, or is missing, for a reason that was told, or did not open after all. It outlives the
  /// wait.
  void Begin(Port& port, bool was_there, const std::string& told = "");
  bool IsWaiting() const { return port_ != nullptr; }
  /// What is waited for was lost, and not missing from the start.
  bool WasThere() const { return was_there_; }
  /// When to call IsBack; besides, whenever the port's descriptor is readable.
  const Deadline& NextLook() const { return look_; }
  /// Whether the port can be opened now. Looks once a pause, and is false in between. Who opens it then
  /// calls either Begin or End.
  bool IsBack();
  /// The port is open.
  void End();

 private:
  using Moment = Deadline::Clock::time_point;

  const Deadline::Clock::duration interval_;
  Deadline::Clock::duration pause_;
  Port* port_ = nullptr;
  Deadline look_;  // not set while an attempt is under way
  Moment since_, opened_;
  bool told_ = false, was_there_ = false;
  std::string reason_;  // why the port does not open though it is there, as was told
};

}  // namespace host
