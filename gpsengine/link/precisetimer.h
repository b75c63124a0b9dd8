#pragma once

#include <memory>

#include "gpsengine/platform/thread.h"
#include "gpsengine/platform/window.h"

#pragma GCC visibility push(default)

/// The tick: wParam is the timer's number, lParam 0.
constexpr UINT WM_PRECISE_TIMER = 0xA732;

/// Sends a window a tick every given number of milliseconds from a thread of its own, above normal priority.
/// Ticks are sent, not posted, so they never pile up, and the period compensates for the time that handling
/// the last one took. The window's thread has to keep servicing its queue.
///
/// Start, Stop and the destructor belong to one thread, normally the window's own.
class CPreciseTimer {
 public:
  CPreciseTimer();
  virtual ~CPreciseTimer();
  CPreciseTimer(const CPreciseTimer&) = delete;
  CPreciseTimer& operator=(const CPreciseTimer&) = delete;

  /// Starts ticking every `nInterval` milliseconds, until Stop, and gives the timer's number. A running timer
  /// is left as it is. 0 if there is no window or the interval is not positive.
  int Start(CWnd* pWnd, int nInterval);
  /// Stops ticking at once; a tick in progress is still delivered.
  void Stop();

 private:
  struct State;
  static unsigned ThreadMain(void* pParam);

  // Used by the owner; the thread has its own copies.
  bool m_bRunning = false;  // Start has run and Stop has not
  int m_nInterval = 0;      // milliseconds
  HWND m_hWnd = nullptr;
  HANDLE m_hStart, m_hStop, m_hExit;
  std::unique_ptr<CWinThread> m_pThread;  // from the first Start on
  int m_nTimerID;

  std::shared_ptr<State> m_pState;  // shared with the thread, which may outlive the timer
};

#pragma GCC visibility pop
