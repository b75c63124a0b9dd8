#pragma once

#include "host/run/output.h"
#include "host/session/outlet.h"

namespace host {

/// Sends the output on its way whenever a run has nothing else to do, and ends the run once nobody reads it
/// any more. The last of the outlets.
class Printer : public Outlet {
 public:
  explicit Printer(Output& output) : output_(output) {}

  /// No event is asked for: that the other end has gone is told all the same.
  void AddWaits(std::vector<pollfd>& waits) override { waits.push_back({output_.Descriptor(), 0, 0}); }
  void Handle(const std::vector<pollfd>& waits, std::size_t first) override {
    done_ = done_ || (waits[first].revents & (POLLERR | POLLHUP)) != 0;
  }
  void Step() override { done_ |= !output_.Flush(); }
  bool IsDone() const override { return done_; }
  bool Finish() override {
    output_.Flush();
    return true;
  }

 private:
  Output& output_;
  bool done_ = false;
};

}  // namespace host
