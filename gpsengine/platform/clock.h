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

/// The clock of a thread: the time, sleeps and waits. A test or a dry run replaces it for its own thread with
/// SetClock; everything that blocks on that thread then goes through it. Other threads keep the real one, so
/// they never use a clock that has been destroyed. No operation may throw; to end a command sequence early,
/// override WantsStop.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Milliseconds since an arbitrary moment; monotonic.
  virtual std::uint64_t Milliseconds();
  /// Seconds since 1970, UTC.
  virtual std::int64_t UnixSeconds();
  /// Returns when `ms` milliseconds of this clock have passed, or earlier once IsStopping.
  virtual void Sleep(DWORD ms);
  /// Waits at most `ms` (INFINITE: without limit). `block` does the waiting: it takes a timeout and returns
  /// whether the wait succeeded within it. Returns the result of `block`.
  virtual bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block);
  /// Whether the user wants to end the running command sequence. Checked before each line; once true, only
  /// lines needed to bring the receiver back to a usable state are written.
  virtual bool WantsStop() { return false; }
};

/// The calling thread's.
Clock& CurrentClock();
/// Replaces the calling thread's clock and returns the previous one. Null stands for the real clock. The
/// caller keeps ownership.
Clock* SetClock(Clock* pClock);

/// Whether a command sequence on the calling thread should end before its next line: the thread's clock wants
/// a stop and no CNoStop is alive.
bool IsStopping();
/// Defers stops on its thread during its lifetime. For stretches in which the receiver is silent, restarting
/// or in another protocol, and the remaining lines bring it back.
class CNoStop {
 public:
  CNoStop();
  ~CNoStop();
  CNoStop(const CNoStop&) = delete;
  CNoStop& operator=(const CNoStop&) = delete;
};

/// Blocks for `ms` milliseconds of the calling thread's clock.
void Sleep(DWORD ms);
/// Milliseconds, unsigned 32 bits: wraps after 49.7 days.
DWORD GetTickCount();

#pragma GCC visibility pop
