#pragma once

#include "gpsengine/platform/clock.h"

namespace host {

/// Time without pauses, as long as it lives. The decoders pace a receiver here and there, and behind a
/// recording there is none.
class UnpacedClock : public Clock {
 public:
  UnpacedClock() { SetClock(this); }
  ~UnpacedClock() override { SetClock(nullptr); }
  void Sleep(DWORD) override {}
};

}  // namespace host
