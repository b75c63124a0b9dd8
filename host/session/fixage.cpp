#include "host/session/fixage.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace host {

namespace {

using namespace std::chrono_literals;

constexpr auto kOld = 5s;
constexpr double kLate = 2.5;  // of the receiver's own intervals

std::string Rounded(FixAge::Clock::duration time) {
  return std::to_string(std::lround(std::chrono::duration<double>(time).count())) + " s";
}

}  // namespace

FixAge::FixAge(std::string& out, std::function<long long()> messages, std::function<Clock::time_point()> now)
    : out_(out), messages_(std::move(messages)), now_(std::move(now)), last_(now_()) {
  Await(kOld);
}

// What comes in the second half tells a receiver that sends from one that does not: after a fix there may be
// more of its epoch.
void FixAge::Await(Clock::duration age) {
  half_ = age / 2;
  halves_ = 0;
  due_ = now_() + half_;
}

bool FixAge::OnData(const Record& record) {
  if (record.HasFix()) {
    const auto age = now_() - std::exchange(last_, now_());
    if (std::exchange(told_, false))
      out_ += (had_fix_ ? "a fix again after " : "a first fix after ") + Rounded(age) + '\n';
    const bool has_interval = std::exchange(had_fix_, true);
    const auto late = std::chrono::duration_cast<Clock::duration>(age * kLate);
    Await(has_interval ? std::max<Clock::duration>(kOld, late) : kOld);
  }
  return false;
}

void FixAge::Step() {
  if (now_() < due_) return;
  if (halves_++ == 0) {
    messages_then_ = messages_();
    due_ = now_() + half_;
    return;
  }
  due_ = Deadline::kNever;
  told_ = true;
  out_ += (had_fix_ ? "no fix for " : "no fix yet after ") + Rounded(now_() - last_) +
          (messages_() > messages_then_ ? ": messages come, but no position\n" : ": nothing comes\n");
}

}  // namespace host
