#include "gpsengine/link/ack.h"

#include "gpsengine/link/ticks.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/trace.h"

namespace {

constexpr UINT kWaitTemplate = 129;

// Wakes the wait. Auto-reset: a late signal from before the wait was armed causes one spurious wake-up at
// most.
HANDLE AckEvent() {
  static const HANDLE event = CreateEventW(false, false);
  return event;
}

// Handles pending messages. False if the host's message loop should end.
bool PumpMessages() {
  bool go_on = true;
  for (MSG message; PeekMessageW(&message, PM_NOREMOVE);) {
    if (CWinApp* app = AfxGetApp()) {
      go_on &= app->PumpMessage();
    } else if (PeekMessageW(&message, PM_REMOVE)) {
      if (message.message == WM_QUIT)
        go_on = false;
      else
        DispatchMessageW(message);
    }
  }
  return go_on;
}

}  // namespace

CShared<bool> CAck::m_bGotAck = false;

CAck::CAck(CWnd* parent) : CDialog(kWaitTemplate, parent) {
  m_bGotAck = false;
  ResetEvent(AckEvent());
}

CAck::~CAck() = default;

bool CAck::Wait(int timeout) {
  Trace("CAck::Wait, Entering \n");
  const CWaitCursor cursor;
  const int timer = m_Timer.Start(this, timeout);
  Trace("CAck::Wait, m_Timer.Start() = %d \n", timer);

  CTicks ticks;
  const DWORD begin = ticks.GetTicks();
  const HANDLE ack = AckEvent();
  bool quit = false;
  while (!m_bGotAck && !m_bTimedOut) {
    DWORD left = INFINITE;
    if (timeout > 0) {
      const DWORD limit = static_cast<DWORD>(timeout), passed = ticks.GetTicks() - begin;
      left = passed < limit ? limit - passed : 0;
    }
    // Normally the timer ends the wait; this is the fallback if its thread could not be created.
    if (MsgWaitForMultipleObjects(1, &ack, left) == WAIT_TIMEOUT) m_bTimedOut = true;
    if (!PumpMessages()) quit = true;
  }
  if (quit) PostQuitMessage();  // for the host's own loop

  const bool got_ack = m_bGotAck;
  if (got_ack) {
    Trace("CAck::Wait, got ACK \n");
  } else {
    Trace("CAck::Wait, got TimedOut \n");
  }
  return got_ack;
}

void CAck::OnNewGPSData(CGPSData* data) {
  if (!data->m_Status.m_bAck) return;
  Trace("CAck::OnUpdateEverything, got ACK \n");
  m_bGotAck = true;
  SetEvent(AckEvent());
}

long CAck::OnPreciseTimer(unsigned int, long) {
  Trace("CAck::OnPreciseTimer, got Timed Out \n");
  m_bTimedOut = true;
  return 0;
}

const AFX_MSGMAP* CAck::_GetBaseMessageMap() {
  return CDialog::GetThisMessageMap();
}

const AFX_MSGMAP* CAck::GetMessageMap() const {
  static constexpr AFX_MSGMAP_ENTRY kRows[] = {{WM_PRECISE_TIMER,
                                                [](CWnd& window, WPARAM w_param, LPARAM l_param) -> LRESULT {
                                                  return static_cast<CAck&>(window).OnPreciseTimer(
                                                      static_cast<unsigned int>(w_param),
                                                      static_cast<long>(l_param));
                                                }},
                                               {0, nullptr}};
  static constexpr AFX_MSGMAP kMap{&CAck::_GetBaseMessageMap, kRows};
  return &kMap;
}
