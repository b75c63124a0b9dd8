#include "host/line/reconnect.h"

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <utility>

#include "host/line/ports.h"
#include "host/run/failure.h"

namespace host {

Reconnect::Reconnect(const std::string& device, Deadline::Clock::duration interval)
    : name_(StableName(device)), interval_(interval) {}

void Reconnect::Begin() {
  if (!std::exchange(told_, true)) {
    lost_ = Deadline::Clock::now();
    Complain("the port was lost; waiting for " + name_ + " to come back. Ctrl-C ends");
  }
  look_.Set(interval_);
}

bool Reconnect::IsBack() {
  if (!look_.HasPassed()) return false;
  look_.Set(interval_);
  if (access(name_.c_str(), F_OK) != 0) return false;
  // It may take a moment until the system has given the device its group, or another program lets go of it.
  const std::string reason = WhyNotOpen(name_);
  if (!reason.empty() && reason != reason_) Complain(reason);
  reason_ = reason;
  return reason.empty();
}

void Reconnect::End() {
  const std::chrono::duration<double> away = Deadline::Clock::now() - lost_;
  std::error_code error;
  const auto device = std::filesystem::canonical(name_, error);
  Complain("the port is back as " + (error ? name_ : device.string()) + " after " +
           std::to_string(std::lround(away.count())) + " s");
  look_.Clear();
  told_ = false;
  reason_.clear();
}

}  // namespace host
