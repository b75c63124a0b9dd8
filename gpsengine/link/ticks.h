#pragma once

#include "gpsengine/platform/types.h"

/// A millisecond counter that hides wraps of the platform's tick, at 0x7FFFFFFF or at 32 bits, by remembering
/// the last value. For use by one thread.
class CTicks {
 public:
  DWORD GetTicks();
  /// The same for a tick that the caller has read.
  DWORD Continue(DWORD tick);

 private:
  DWORD m_nLast = 0;
};
