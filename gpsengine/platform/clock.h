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
/// All other threads keep the real one, and so never meet a clock that is going away. No operation throws:
/// what waits cannot be unwound, and who wants to end a command sequence says so in WantsStop.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Milliseconds since some fixed moment; never goes back.
  virtual std::uint64_t Milliseconds();
  /// Seconds since 1970, UTC.
  virtual std::int64_t UnixSeconds();
  /// Returns when `ms` milliseconds of this clock have passed, or earlier once IsStopping.
  virtual void Sleep(DWORD ms);
  /// Waits at most `ms` (INFINITE: without limit). `block` does the waiting: given a time, it returns true as
  /// soon as what is waited for has come, false when the time has passed. The result is that of `block`.
  virtual bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block);
  /// Whether the user wants the command sequence under way to end. The sequence asks before each of its
  /// lines, and writes no more of them than it takes to leave the receiver so that it can be understood.
  virtual bool WantsStop() { return false; }
};

/// The calling thread's.
Clock& CurrentClock();
/// Replaces the clock of the calling thread, null stands for the real one, and gives the one before. The
/// caller keeps ownership.
Clock* SetClock(Clock* pClock);

/// Whether a command sequence on the calling thread is to end before its next line: its clock wants a stop,
/// and no CNoStop is in force.
bool IsStopping();
/// While it lives, no stop is heeded on its thread: the receiver is silent, restarting or in another
/// protocol, and the lines to come lead back.
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
