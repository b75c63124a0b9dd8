#pragma once

#include <functional>
#include <memory>
#include <optional>
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
  /// How many that were when a signal came or the user stopped it, which ends it at the next line that may be
  /// the last; none if it was not stopped.
  static std::optional<long long> StoppedAt() { return Installed().stopped_at_; }

  void Sleep(DWORD ms) override;
  bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) override;
  bool WantsStop() override;

 private:
  PacingClock() = default;
  static PacingClock& Installed();

  // Other threads look no further than at who they are.
  bool IsWatched() const { return std::this_thread::get_id() == owner_ && interrupt_ != nullptr; }
  void Pass(DWORD ms);
  void Stop() { stopped_at_ = stopped_at_.value_or(passed_); }

  const std::thread::id owner_ = std::this_thread::get_id();
  const Interrupt* interrupt_ = nullptr;
  std::function<bool(long long)> on_passed_;
  long long passed_ = 0;
  std::optional<long long> stopped_at_;
};

}  // namespace host
