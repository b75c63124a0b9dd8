#include "host/session/fixage.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace host {

namespace {

// A fix is late when that many of the receiver's own intervals have passed.
constexpr double kIntervals = 2.5;

std::string Rounded(double seconds) {
  return std::to_string(std::lround(seconds)) + " s";
}

}  // namespace

FixAge::FixAge(std::string& out, std::function<long long()> messages, double old)
    : out_(out), messages_(std::move(messages)), old_(old) {
  Await(old_);
}

// What comes in the second half tells a receiver that sends from one that does not: after a fix there may be
// more of its epoch.
void FixAge::Await(double age) {
  half_ = age / 2.0;
  halves_ = 0;
  due_.Set(half_);
}

bool FixAge::OnData(const Record& record) {
  if (record.HasFix()) {
    const double age = Age();
    if (std::exchange(told_, false)) {
      out_ += (had_fix_ ? "a fix again after " : "a first fix after ") + Rounded(age) + '\n';
    }
    Await(std::max(old_, had_fix_ ? kIntervals * age : 0.0));
    last_ = Clock::now();
    had_fix_ = true;
  }
  return false;
}

void FixAge::Step() {
  if (!due_.HasPassed()) return;
  if (halves_++ == 0) {
    messages_then_ = messages_();
    return due_.Set(half_);
  }
  due_.Clear();
  told_ = true;
  out_ += (had_fix_ ? "no fix for " : "no fix yet after ") + Rounded(Age()) +
          (messages_() > messages_then_ ? ": messages come, but no position\n" : ": nothing comes\n");
}

}  // namespace host
