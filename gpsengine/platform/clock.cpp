#include "gpsengine/platform/clock.h"

#include <chrono>
#include <thread>
#include <utility>

#include "gpsengine/platform/ctime.h"
#include "gpsengine/platform/system.h"

namespace {

thread_local Clock* t_pClock = nullptr;
thread_local int t_nNoStop = 0;  // number of live CNoStop objects

}  // namespace

std::uint64_t Clock::Milliseconds() {
  using namespace std::chrono;
  return static_cast<std::uint64_t>(
      duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

std::int64_t Clock::UnixSeconds() {
  return std::time(nullptr);
}

void Clock::Sleep(DWORD ms) {
  if (ms == 0) {
    std::this_thread::yield();
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
  }
}

bool Clock::Wait(WaitKind, DWORD ms, const std::function<bool(DWORD)>& block) {
  return block(ms);
}

Clock& CurrentClock() {
  // Never destroyed: a thread may still be waiting during static destruction.
  static auto* const real = new Clock;
  return t_pClock == nullptr ? *real : *t_pClock;
}

Clock* SetClock(Clock* clock) {
  return std::exchange(t_pClock, clock);
}

bool IsStopping() {
  return t_nNoStop == 0 && CurrentClock().WantsStop();
}

CNoStop::CNoStop() {
  ++t_nNoStop;
}

CNoStop::~CNoStop() {
  --t_nNoStop;
}

void Sleep(DWORD ms) {
  CurrentClock().Sleep(ms);
}

DWORD GetTickCount() {
  return static_cast<DWORD>(CurrentClock().Milliseconds());
}

CTime CTime::GetCurrentTime() {
  return CTime(CurrentClock().UnixSeconds());
}

std::tm* CTime::GetLocalTm(std::tm* tm) const {
  return LocalTime(m_nSeconds, tm);
}
