#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "host/run/interrupt.h"
#include "host/run/output.h"
#include "host/run/portwatch.h"

namespace host {

/// A moment that may never come.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  void Set(double seconds) {
    Set(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds)));
  }
  void Set(Clock::duration time) { at_ = Clock::now() + time; }
  void Clear() { at_.reset(); }
  bool IsSet() const { return at_.has_value(); }
  bool HasPassed() const { return at_ && Clock::now() >= *at_; }
  Clock::time_point Earlier(Clock::time_point other) const { return at_ && *at_ < other ? *at_ : other; }

 private:
  std::optional<Clock::time_point> at_;
};

/// For poll: the time until that moment, -1 for one that never comes.
int MillisecondsUntil(Deadline::Clock::time_point moment);

/// What a host's loop waits for, all in one place: messages of the library, signals, the end of the output's
/// reader, the port's end, and the passing of time.
class Waiter {
 public:
  Waiter(const Interrupt& interrupt, const Output& output, PortWatch& watch)
      : interrupt_(interrupt), output_(output), watch_(watch) {}

  /// Returns when something has happened, or at that moment. Takes note of it in the watch.
  void Wait(Deadline::Clock::time_point until);
  /// Waits for input there too, until that has come to its end.
  void Watch(int descriptor) { descriptors_.push_back(descriptor); }
  /// Nobody reads the output any more.
  bool IsReaderGone() const { return reader_gone_; }

 private:
  const Interrupt& interrupt_;
  const Output& output_;
  PortWatch& watch_;
  std::vector<int> descriptors_;
  bool reader_gone_ = false;
};

}  // namespace host
