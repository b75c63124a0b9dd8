#pragma once

#include <optional>
#include <string>
#include <thread>

#include "gpsengine/platform/clock.h"
#include "host/interrupt.h"
#include "host/progress.h"

namespace host {

/// The real clock, which during a long command sequence shows how far it has got and lets Ctrl-C end it. It
/// watches the waits of the thread that installed it; those of other threads are none of its business.
class PacingClock : public Clock {
 public:
  /// Thrown out of a wait of the sequence when a signal comes.
  struct Interrupted {};

  /// A sequence lasts from here to the end of the object's life. `time` is how long it takes, in
  /// milliseconds.
  class Sequence {
   public:
    Sequence(const Interrupt& interrupt, const std::string& label, long long time);
    ~Sequence();
    Sequence(const Sequence&) = delete;
    Sequence& operator=(const Sequence&) = delete;
  };

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
  std::optional<Progress> progress_;
  long long passed_ = 0;
};

}  // namespace host
