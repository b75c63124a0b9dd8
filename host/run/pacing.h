#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "gpsengine/platform/clock.h"
#include "host/run/interrupt.h"
#include "host/run/progress.h"

namespace host {

/// The real clock, which during a long command sequence shows how far it has got and lets Ctrl-C end it. It
/// watches the waits of the thread that installed it; those of other threads are none of its business.
class PacingClock : public Clock {
 public:
  /// Thrown out of a wait of the sequence when a signal comes or the user stops it.
  struct Interrupted {};

  /// A sequence lasts from here to the end of the object's life. `time` is how long it takes, in
  /// milliseconds.
  class Sequence {
   public:
    Sequence(const Interrupt& interrupt, const std::string& label, long long time);
    /// Shows nothing by itself: `passed` gets the milliseconds that have passed, many times a second, and
    /// says whether the sequence may go on. It runs between two waits, and may take messages out of the
    /// queue.
    Sequence(const Interrupt& interrupt, std::function<bool(long long)> passed);
    ~Sequence();
    Sequence(const Sequence&) = delete;
    Sequence& operator=(const Sequence&) = delete;
  };

  /// Milliseconds that the last sequence has waited so far.
  static long long Passed() { return Installed().passed_; }

  void Sleep(DWORD ms) override;
  bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) override;

 private:
  PacingClock() = default;
  static PacingClock& Installed();

  // Other threads look no further than at who they are.
  bool IsWatched() const { return std::this_thread::get_id() == owner_ && interrupt_ != nullptr; }
  /// The length of the next piece of a wait, having looked at what has come meanwhile.
  DWORD NextPiece(DWORD rest) const;
  void Pass(DWORD ms);

  const std::thread::id owner_ = std::this_thread::get_id();
  const Interrupt* interrupt_ = nullptr;
  std::function<bool(long long)> on_passed_;
  long long passed_ = 0;
};

}  // namespace host
