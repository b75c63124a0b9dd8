#pragma once

#include <poll.h>

#include <chrono>
#include <optional>
#include <vector>

namespace host {

/// A moment that may never come.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;
  using Moment = Clock::time_point;
  static constexpr Moment kNever = Moment::max();

  void Set(double seconds) {
    Set(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds)));
  }
  void Set(Clock::duration time) { at_ = Clock::now() + time; }
  void Clear() { at_.reset(); }
  bool IsSet() const { return at_.has_value(); }
  bool HasPassed() const { return at_ && Clock::now() >= *at_; }
  Moment Earlier(Moment other) const { return at_ && *at_ < other ? *at_ : other; }

 private:
  std::optional<Moment> at_;
};

/// For poll: the time until that moment, -1 for one that never comes.
int MillisecondsUntil(Deadline::Moment moment);

/// Waits until one of them is ready, or that moment. What was found stands in them.
void WaitFor(std::vector<pollfd>& waits, Deadline::Moment until);

}  // namespace host
