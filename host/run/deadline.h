#pragma once

#include <poll.h>

#include <algorithm>
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
inline int MillisecondsUntil(Deadline::Moment moment) {
  if (moment == Deadline::kNever) return -1;
  const auto rest = std::chrono::ceil<std::chrono::milliseconds>(moment - Deadline::Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(rest, 0, 1 << 30));
}

/// Waits until one of them is ready, or that moment. What was found stands in them.
inline void WaitFor(std::vector<pollfd>& waits, Deadline::Moment until) {
  if (poll(waits.data(), waits.size(), MillisecondsUntil(until)) > 0) return;
  for (auto& wait : waits) wait.revents = 0;
}

}  // namespace host
