#include "gpsengine/link/precisetimer.h"

#include <mutex>

#include "gpsengine/link/ticks.h"
#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/platform/thread.h"
#include "gpsengine/platform/trace.h"

namespace {

// Sent ahead of each tick. Nobody handles it: it comes back when the window's thread has serviced its queue.
UINT QueueCheckMessage() {
  static const UINT nMessage = RegisterWindowMessageW(u"QRV Precise Timer Queue Checker");
  return nMessage;
}

int NextTimerID() {
  static CShared<int> s_nLast = 0;
  return ++s_nLast;
}

constexpr DWORD kPauseOfLateTick = 10;

}  // namespace

struct CPreciseTimer::State {
  ~State() {
    for (const HANDLE hEvent : {hStart, hStop, hExit}) CloseHandle(hEvent);
  }

  void Run();
  DWORD Park() const;
  DWORD Tick();
  DWORD WaitForOwner(DWORD ms) const;

  const int nTimerID = NextTimerID();
  const HANDLE hStart = CreateEventW(false, false);
  const HANDLE hStop = CreateEventW(true, false);
  const HANDLE hExit = CreateEventW(true, false);

  // The owner's.
  bool bRunning = false;
  bool bHasThread = false;

  // From the owner to the thread.
  std::mutex mutex;
  int nInterval = 0;
  HWND hWnd = nullptr;

  // The thread's.
  CTicks ticks;
  DWORD nTook = 0;  // of the last tick, in milliseconds; lives on from one start to the next
};

namespace {

// What the owner wants of a ticking thread: the order of the handles in WaitForOwner.
enum : DWORD { kStop = WAIT_OBJECT_0, kExit, kStart };

}  // namespace

CPreciseTimer::CPreciseTimer() : m_pState(std::make_shared<State>()) {}

CPreciseTimer::~CPreciseTimer() {
  Stop();
  // No join: the thread may be inside a send that only this thread can let go.
  SetEvent(m_pState->hExit);
}

int CPreciseTimer::Start(CWnd* pWnd, int nInterval) {
  State& state = *m_pState;
  if (pWnd == nullptr || nInterval <= 0) return 0;
  if (state.bRunning) return state.nTimerID;
  {
    const std::lock_guard lock(state.mutex);
    state.nInterval = nInterval;
    state.hWnd = pWnd->GetSafeHwnd();
  }
  if (!state.bHasThread) {
    auto pShare = std::make_unique<std::shared_ptr<State>>(m_pState);
    if (!AfxBeginThread(ThreadMain, pShare.get(), THREAD_PRIORITY_ABOVE_NORMAL)) return 0;
    static_cast<void>(pShare.release());  // the thread's now
    state.bHasThread = true;
  }
  state.bRunning = true;
  ResetEvent(state.hStop);
  SetEvent(state.hStart);
  return state.nTimerID;
}

void CPreciseTimer::Stop() {
  State& state = *m_pState;
  if (!state.bRunning) return;
  ResetEvent(state.hStart);
  SetEvent(state.hStop);
  state.bRunning = false;
}

unsigned CPreciseTimer::ThreadMain(void* pParam) {
  const std::unique_ptr<std::shared_ptr<State>> pShare(static_cast<std::shared_ptr<State>*>(pParam));
  (*pShare)->Run();
  return 1;
}

void CPreciseTimer::State::Run() {
  DWORD nWanted = kStop;
  while (nWanted == kStop || nWanted == kStart) nWanted = nWanted == kStart ? Tick() : Park();
}

DWORD CPreciseTimer::State::Park() const {
  const HANDLE events[] = {hStart, hExit};
  return WaitForMultipleObjects(2, events, INFINITE) == WAIT_OBJECT_0 ? DWORD{kStart} : DWORD{kExit};
}

// A start is waited for as well: a stop that a new start follows at once may pass unseen.
DWORD CPreciseTimer::State::WaitForOwner(DWORD ms) const {
  const HANDLE events[] = {hStop, hExit, hStart};
  return WaitForMultipleObjects(3, events, ms);
}

// Ticks until the owner wants something else, and gives what.
DWORD CPreciseTimer::State::Tick() {
  std::unique_lock lock(mutex);
  const DWORD nPeriod = static_cast<DWORD>(nInterval);
  const HWND hTarget = hWnd;
  lock.unlock();
  Trace("CPreciseTimer: %d\tReceived start event.\n", nTimerID);

  for (;;) {
    DWORD nWanted = WaitForOwner(nPeriod > nTook ? nPeriod - nTook : 1);
    if (nWanted == WAIT_TIMEOUT) {
      if (!IsWindow(hTarget)) continue;
      const DWORD nBegin = ticks.GetTicks();
      SendMessageW(hTarget, QueueCheckMessage(), 0, 0);
      nWanted = WaitForOwner(0);  // a stop that came meanwhile wins
      if (nWanted == WAIT_TIMEOUT) {
        SendMessageW(hTarget, WM_PRECISE_TIMER, static_cast<WPARAM>(nTimerID), 0);
        nTook = ticks.GetTicks() - nBegin;
        if (nTook > nPeriod) Sleep(kPauseOfLateTick);
        continue;
      }
    }
    if (nWanted != kStop && nWanted != kStart) Trace("CPreciseTimer: %d\tThread exiting.\n", nTimerID);
    return nWanted;
  }
}
