#include "host/run/pacing.h"

#include <algorithm>
#include <utility>

#include "host/run/failure.h"

namespace host {

namespace {

constexpr DWORD kLongestWait = 50;
// Shorter sequences are over before anyone wonders.
constexpr long long kLongSequence = 1500;

std::function<bool(long long)> ShowProgress(const Interrupt& interrupt, const std::string& label,
                                            long long time) {
  const auto progress = std::make_shared<Progress>(
      label, static_cast<double>(time), !label.empty() && time >= kLongSequence && CanShowProgress(false));
  progress->Update(0.0);
  return [progress, &interrupt, told = false](long long passed) mutable {
    if (!told && interrupt.HasCome() && !IsStopping()) {
      told = true;
      Complain("stopping; first the receiver is brought back to a usable state");
    }
    progress->Update(static_cast<double>(passed));
    return true;
  };
}

}  // namespace

// It stays in place for good: a thread of the library may still be waiting by it when the program ends.
PacingClock& PacingClock::Installed() {
  static PacingClock* const clock = new PacingClock;
  SetClock(clock);
  return *clock;
}

PacingClock::Sequence::Sequence(const Interrupt& interrupt, const std::string& label, long long time)
    : Sequence(interrupt, ShowProgress(interrupt, label, time)) {}

PacingClock::Sequence::Sequence(const Interrupt& interrupt, std::function<bool(long long)> passed) {
  PacingClock& clock = Installed();
  clock.passed_ = 0;
  clock.stopped_at_.reset();
  clock.on_passed_ = std::move(passed);
  clock.interrupt_ = &interrupt;
}

PacingClock::Sequence::~Sequence() {
  PacingClock& clock = Installed();
  clock.interrupt_ = nullptr;
  clock.on_passed_ = {};
}

bool PacingClock::WantsStop() {
  if (!IsWatched()) return false;
  if (interrupt_->HasCome()) Stop();
  return stopped_at_.has_value();
}

void PacingClock::Pass(DWORD ms) {
  passed_ += ms;
  if (!on_passed_(passed_)) Stop();
}

void PacingClock::Sleep(DWORD ms) {
  if (!IsWatched()) return Clock::Sleep(ms);
  while (ms > 0 && !IsStopping()) {
    const DWORD piece = std::min(ms, kLongestWait);
    Clock::Sleep(piece);
    Pass(piece);
    ms -= piece;
  }
}

bool PacingClock::Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) {
  if (!IsWatched() || kind != WaitKind::message || ms == INFINITE) return Clock::Wait(kind, ms, block);
  while (ms > 0 && !IsStopping()) {
    const DWORD piece = std::min(ms, kLongestWait);
    if (Clock::Wait(kind, piece, block)) return true;
    Pass(piece);
    ms -= piece;
  }
  return Clock::Wait(kind, 0, block);
}

}  // namespace host
