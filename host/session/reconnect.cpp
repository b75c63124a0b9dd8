#include "host/session/reconnect.h"

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <utility>

#include "host/line/ports.h"
#include "host/run/failure.h"

namespace host {

bool IsThere(const std::string& port) {
  return access(port.c_str(), F_OK) == 0;
}

void Reconnect::Begin(const std::string& name, bool was_there) {
  name_ = name;
  look_.Set(interval_);
  if (std::exchange(told_, true)) return;
  since_ = Deadline::Clock::now();
  was_there_ = was_there;
  Complain((was_there ? "the port was lost; waiting for " + name_ + " to come back"
                      : "waiting for " + name_ + " to be plugged in") +
           ". Ctrl-C ends");
}

bool Reconnect::IsBack() {
  if (!look_.HasPassed()) return false;
  look_.Set(interval_);
  if (!IsThere(name_)) return false;
  // It may take a moment until the system has given the device its group, or another program lets go of it.
  const std::string reason = WhyNotOpen(name_);
  if (!reason.empty() && reason != reason_) Complain(reason);
  reason_ = reason;
  return reason.empty();
}

void Reconnect::End() {
  const std::chrono::duration<double> away = Deadline::Clock::now() - since_;
  std::error_code error;
  const auto device = std::filesystem::canonical(name_, error);
  Complain((was_there_ ? "the port is back as " : "the port is there as ") +
           (error ? name_ : device.string()) + " after " + std::to_string(std::lround(away.count())) + " s");
  look_.Clear();
  told_ = false;
  reason_.clear();
}

}  // namespace host
