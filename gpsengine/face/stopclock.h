#pragma once

#include <stop_token>

#include "gpsengine/platform/clock.h"

namespace gps {

/// The clock of a thread on which a command sequence ends early once a token is stopped, as long as this
/// lives.
class StopClock : public Clock {
 public:
  explicit StopClock(std::stop_token stop) : stop_(std::move(stop)), before_(SetClock(this)) {}
  ~StopClock() override { SetClock(before_); }
  StopClock(const StopClock&) = delete;
  StopClock& operator=(const StopClock&) = delete;

  bool WantsStop() override { return stop_.stop_requested(); }
  void Sleep(DWORD ms) override;
  bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) override;

 private:
  const std::stop_token stop_;
  Clock* const before_;
};

}  // namespace gps
