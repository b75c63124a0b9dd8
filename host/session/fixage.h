#pragma once

#include <functional>
#include <string>

#include "host/session/outlet.h"

namespace host {

/// Tells a reader of lines that the last fix grows old, which by itself is seen only by what does not come: a
/// line once there was none for some seconds, and another when there is one again. The lines count as no
/// records. A receiver that has a fix every half minute is given time accordingly. It takes the records ahead
/// of whoever shows them.
class FixAge : public Sink, public Outlet {
 public:
  using Clock = Deadline::Clock;

  /// Its lines go to `out`. `messages` tells how many messages have come from the receiver, fixes or not.
  FixAge(std::string& out, std::function<long long()> messages,
         std::function<Clock::time_point()> now = &Clock::now);

  Sink* Records() override { return this; }
  bool OnData(const Record& record) override;
  /// Says that the fix is old, if it has become so.
  void Step() override;
  Deadline::Moment NextAt() const override { return due_; }

 private:
  void Await(Clock::duration age);

  std::string& out_;
  const std::function<long long()> messages_;
  const std::function<Clock::time_point()> now_;
  Clock::time_point last_;       // the last fix, or the start
  Clock::duration half_{};       // of the age at which the next fix is late
  int halves_ = 0;               // that have passed
  long long messages_then_ = 0;  // after the first of them
  bool had_fix_ = false;
  bool told_ = false;
  Deadline::Moment due_;
};

}  // namespace host
