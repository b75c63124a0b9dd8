#pragma once

#include <poll.h>

#include <cstddef>
#include <string_view>
#include <vector>

#include "host/records/sink.h"
#include "host/run/deadline.h"

namespace host {

/// What becomes of a run.
enum class RunEvent {
  starting,    ///< The receiver is being started, which may block for long.
  started,     ///< That is over, whether or not it worked.
  understood,  ///< A message was understood, the first one since the line was opened.
  lost,        ///< The line has gone, and what had come from it has been passed on. It is waited for.
  back,        ///< It is there again, and the receiver has been started.
  over,        ///< The engine is about to be stopped.
};

/// A way out of a run: takes what comes from the receiver, and lives in the run's loop. All calls are on the
/// thread of the loop, those up to Step during a start of the receiver too.
class Outlet {
 public:
  virtual ~Outlet() = default;

  /// Takes the records; null if it wants none.
  virtual Sink* Records() { return nullptr; }
  /// The texts of messages are wanted among the records.
  virtual bool WantsTexts() const { return false; }
  /// The bytes that have come, as far as the feed shows them, before what was made of them.
  virtual void OnBytes(std::string_view /*bytes*/) {}
  virtual void OnEvent(RunEvent /*event*/) {}

  /// When to call Step at the latest.
  virtual Deadline::Moment NextAt() const { return Deadline::kNever; }
  /// Appends what else to wait for.
  virtual void AddWaits(std::vector<pollfd>& /*waits*/) {}
  /// Takes note of what was found, its own waits beginning at `first`.
  virtual void Handle(const std::vector<pollfd>& /*waits*/, std::size_t /*first*/) {}
  /// Does what is due, after every wait. Throws a Failure that ends the run.
  virtual void Step() {}
  /// The run may end, having done what it was to do.
  virtual bool IsDone() const { return false; }
  /// The run has ended in order, and everything has been passed on. False if the job has failed.
  virtual bool Finish() { return true; }
};

}  // namespace host
