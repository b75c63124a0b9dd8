#include "gpsengine/link/precisetimer.h"

#include <mutex>

#include "gpsengine/link/ticks.h"
#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/platform/trace.h"

namespace {

// Sent before each tick. It has no handler: the send returns once the window's thread services its queue.
UINT QueueCheckMessage() {
  static const UINT message = RegisterWindowMessageW(u"QRV Precise Timer Queue Checker");
  return message;
}

int NextTimerID() {
  static CShared<int> s_n_last = 0;
  return ++s_n_last;
}

constexpr DWORD kPauseOfLateTick = 10;

}  // namespace

// The thread's share of the timer. The last owner closes the events.
struct CPreciseTimer::State {
  ~State() {
    for (const HANDLE event : {hStart, hStop, hExit}) CloseHandle(event);
  }

  void Run();
  DWORD Park() const;
  DWORD Tick();
  DWORD WaitForOwner(DWORD ms) const;

  const int nTimerID = NextTimerID();
  const HANDLE hStart = CreateEventW(false, false);
  const HANDLE hStop = CreateEventW(true, false);
  const HANDLE hExit = CreateEventW(true, false);

  // From the owner to the thread.
  std::mutex mutex;
  int nInterval = 0;
  HWND hWnd = nullptr;

  // The thread's.
  CTicks ticks;
  DWORD nTook = 0;  // of the last tick, in milliseconds; kept across starts
};

namespace {

// What the owner may ask of a ticking thread, in the order of the handles in WaitForOwner.
enum : DWORD { kStop = WAIT_OBJECT_0, kExit, kStart };

}  // namespace

CPreciseTimer::CPreciseTimer() : m_pState(std::make_shared<State>()) {
  m_hStart = m_pState->hStart;
  m_hStop = m_pState->hStop;
  m_hExit = m_pState->hExit;
  m_nTimerID = m_pState->nTimerID;
}

CPreciseTimer::~CPreciseTimer() {
  Stop();
  // No join: the thread may be blocked in a send that only this thread can complete.
  SetEvent(m_hExit);
}

int CPreciseTimer::Start(CWnd* wnd, int interval) {
  if (wnd == nullptr || interval <= 0) return 0;
  if (m_bRunning) return m_nTimerID;
  m_nInterval = interval;
  m_hWnd = wnd->GetSafeHwnd();
  {
    const std::lock_guard lock(m_pState->mutex);
    m_pState->nInterval = m_nInterval;
    m_pState->hWnd = m_hWnd;
  }
  if (m_pThread == nullptr) {
    auto share = std::make_unique<std::shared_ptr<State>>(m_pState);
    m_pThread = AfxBeginThread(ThreadMain, share.get(), THREAD_PRIORITY_ABOVE_NORMAL);
    if (m_pThread == nullptr) return 0;
    static_cast<void>(share.release());  // the thread's now
  }
  m_bRunning = true;
  ResetEvent(m_hStop);
  SetEvent(m_hStart);
  return m_nTimerID;
}

void CPreciseTimer::Stop() {
  if (!m_bRunning) return;
  ResetEvent(m_hStart);
  SetEvent(m_hStop);
  m_bRunning = false;
}

unsigned CPreciseTimer::ThreadMain(void* param) {
  const std::unique_ptr<std::shared_ptr<State>> share(static_cast<std::shared_ptr<State>*>(param));
  (*share)->Run();
  return 1;
}

void CPreciseTimer::State::Run() {
  DWORD wanted = kStop;
  while (wanted == kStop || wanted == kStart) wanted = wanted == kStart ? Tick() : Park();
}

DWORD CPreciseTimer::State::Park() const {
  const HANDLE events[] = {hStart, hExit};
  return WaitForMultipleObjects(2, events, INFINITE) == WAIT_OBJECT_0 ? DWORD{kStart} : DWORD{kExit};
}

// Also waits for a start: a stop that is followed at once by a new start may go unnoticed.
DWORD CPreciseTimer::State::WaitForOwner(DWORD ms) const {
  const HANDLE events[] = {hStop, hExit, hStart};
  return WaitForMultipleObjects(3, events, ms);
}

// Ticks until the owner asks for something else, and returns what.
DWORD CPreciseTimer::State::Tick() {
  std::unique_lock lock(mutex);
  const DWORD period = static_cast<DWORD>(nInterval);
  const HWND target = hWnd;
  lock.unlock();
  Trace("CPreciseTimer: %d\tReceived start event.\n", nTimerID);

  for (;;) {
    DWORD wanted = WaitForOwner(period > nTook ? period - nTook : 1);
    if (wanted == WAIT_TIMEOUT) {
      if (!IsWindow(target)) continue;
      const DWORD begin = ticks.GetTicks();
      SendMessageW(target, QueueCheckMessage(), 0, 0);
      wanted = WaitForOwner(0);  // a stop that came meanwhile wins
      if (wanted == WAIT_TIMEOUT) {
        SendMessageW(target, WM_PRECISE_TIMER, static_cast<WPARAM>(nTimerID), 0);
        nTook = ticks.GetTicks() - begin;
        if (nTook > period) Sleep(kPauseOfLateTick);
        continue;
      }
    }
    if (wanted != kStop && wanted != kStart) Trace("CPreciseTimer: %d\tThread exiting.\n", nTimerID);
    return wanted;
  }
}
