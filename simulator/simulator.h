#pragma once

/// Simulated GPS receivers for trying a host on: make one with MakeReceiver(), then either ask it for its
/// bytes in simulated time, or let a PtyRunner put it on a pseudo-terminal in real time.

#include "simulator/line.h"      // IWYU pragma: export
#include "simulator/receiver.h"  // IWYU pragma: export
