#include "host/session/reconnect.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

#include "host/run/failure.h"

namespace host {

namespace {

constexpr std::chrono::seconds kLongestPause{30};

}  // namespace

void Reconnect::Begin(Port& port, bool was_there, const std::string& told) {
  const Moment now = Deadline::Clock::now();
  port_ = &port;
  if (now - opened_ > kLongestPause) pause_ = interval_;
  look_.Set(pause_);
  if (port.GetAddress())
    pause_ = std::max(interval_, std::min<Deadline::Clock::duration>(2 * pause_, kLongestPause));
  if (std::exchange(told_, true)) return;
  since_ = now;
  was_there_ = was_there;
  reason_ = told;
  Complain((was_there           ? "the port was lost; waiting for " + port.Name() + " to come back"
            : port.GetAddress() ? "waiting for " + port.Name() + " to answer"
                                : "waiting for " + port.Name() + " to be plugged in") +
           ". Ctrl-C ends");
}

bool Reconnect::IsBack() {
  if (!IsWaiting() || (look_.IsSet() && !look_.HasPassed())) return false;
  look_.Clear();
  if (!port_->Prepare()) return false;
  // It may take a moment until the system has given the device its group, or another program lets go of it.
  const bool is_missing = port_->IsMissing();
  const std::string reason = is_missing && !port_->GetAddress() ? "" : port_->WhyNot();
  if (!reason.empty() && reason != reason_) Complain(reason);
  reason_ = reason;
  if (!is_missing && reason.empty()) return true;
  Begin(*port_, was_there_);
  return false;
}

void Reconnect::End() {
  opened_ = Deadline::Clock::now();
  const std::chrono::duration<double> away = opened_ - since_;
  std::error_code error;
  const auto device = std::filesystem::canonical(port_->Name(), error);
  Complain((was_there_ ? "the port is back as " : "the port is there as ") +
           (error ? port_->Name() : device.string()) + " after " + std::to_string(std::lround(away.count())) +
           " s");
  look_.Clear();
  port_ = nullptr;
  told_ = false;
  reason_.clear();
}

}  // namespace host
