#pragma once

#include <cstdint>
#include <functional>

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

/// What a blocked thread waits for.
enum class WaitKind {
  event,    ///< One or more events.
  message,  ///< A window message, or an event.
  line,     ///< The serial line.
};

/// The one clock: what time it is, how long a sleep takes, how a wait passes. A test or a dry run puts
/// another in its place for its own thread, with SetClock; everything that blocks there then goes through it.
/// All other threads keep the real one, and so never meet a clock that is going away.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Milliseconds since some fixed moment; never goes back.
  virtual std::uint64_t Milliseconds();
  /// Seconds since 1970, UTC.
  virtual std::int64_t UnixSeconds();
  /// Returns when `ms` milliseconds of this clock have passed.
  virtual void Sleep(DWORD ms);
  /// Waits at most `ms` (INFINITE: without limit). `block` does the waiting: given a time, it returns true as
  /// soon as what is waited for has come, false when the time has passed. The result is that of `block`.
  virtual bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block);
};

/// The calling thread's.
Clock& CurrentClock();
/// Replaces the clock of the calling thread, null restores the real one. The caller keeps ownership.
void SetClock(Clock* pClock);

/// Blocks for `ms` milliseconds of the calling thread's clock.
void Sleep(DWORD ms);
/// Milliseconds, unsigned 32 bits: wraps after 49.7 days.
DWORD GetTickCount();

#pragma GCC visibility pop
