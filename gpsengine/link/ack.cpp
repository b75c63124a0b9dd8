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
  static const HANDLE hEvent = CreateEventW(false, false);
  return hEvent;
}

// Handles pending messages. False if the host's message loop should end.
bool PumpMessages() {
  bool bGoOn = true;
  for (MSG message; PeekMessageW(&message, PM_NOREMOVE);) {
    if (CWinApp* pApp = AfxGetApp()) {
      bGoOn &= pApp->PumpMessage();
    } else if (PeekMessageW(&message, PM_REMOVE)) {
      if (message.message == WM_QUIT)
        bGoOn = false;
      else
        DispatchMessageW(message);
    }
  }
  return bGoOn;
}

}  // namespace

CShared<bool> CAck::m_bGotAck = false;

CAck::CAck(CWnd* pParent) : CDialog(kWaitTemplate, pParent) {
  m_bGotAck = false;
  ResetEvent(AckEvent());
}

CAck::~CAck() = default;

bool CAck::Wait(int nTimeout) {
  Trace("CAck::Wait, Entering \n");
  const CWaitCursor cursor;
  const int nTimer = m_Timer.Start(this, nTimeout);
  Trace("CAck::Wait, m_Timer.Start() = %d \n", nTimer);

  CTicks ticks;
  const DWORD nBegin = ticks.GetTicks();
  const HANDLE hAck = AckEvent();
  bool bQuit = false;
  while (!m_bGotAck && !m_bTimedOut) {
    DWORD nLeft = INFINITE;
    if (nTimeout > 0) {
      const DWORD nLimit = static_cast<DWORD>(nTimeout), nPassed = ticks.GetTicks() - nBegin;
      nLeft = nPassed < nLimit ? nLimit - nPassed : 0;
    }
    // Normally the timer ends the wait; this is the fallback if its thread could not be created.
    if (MsgWaitForMultipleObjects(1, &hAck, nLeft) == WAIT_TIMEOUT) m_bTimedOut = true;
    if (!PumpMessages()) bQuit = true;
  }
  if (bQuit) PostQuitMessage();  // for the host's own loop

  const bool bGotAck = m_bGotAck;
  if (bGotAck) {
    Trace("CAck::Wait, got ACK \n");
  } else {
    Trace("CAck::Wait, got TimedOut \n");
  }
  return bGotAck;
}

void CAck::OnNewGPSData(CGPSData* pData) {
  if (!pData->m_Status.m_bAck) return;
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
                                                [](CWnd& window, WPARAM wParam, LPARAM lParam) -> LRESULT {
                                                  return static_cast<CAck&>(window).OnPreciseTimer(
                                                      static_cast<unsigned int>(wParam),
                                                      static_cast<long>(lParam));
                                                }},
                                               {0, nullptr}};
  static constexpr AFX_MSGMAP kMap{&CAck::_GetBaseMessageMap, kRows};
  return &kMap;
}
