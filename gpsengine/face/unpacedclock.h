#pragma once

#include "gpsengine/platform/clock.h"

#pragma GCC visibility push(default)

namespace gps {

/// Time without pauses for the calling thread, as long as it lives. The decoders pace a receiver here and
/// there, and a recording has none.
class UnpacedClock : public Clock {
 public:
  UnpacedClock() : before_(SetClock(this)) {}
  ~UnpacedClock() override { SetClock(before_); }
  UnpacedClock(const UnpacedClock&) = delete;
  UnpacedClock& operator=(const UnpacedClock&) = delete;
  void Sleep(DWORD) override {}  ///< Returns at once.

 private:
  Clock* const before_;
};

}  // namespace gps

#pragma GCC visibility pop
