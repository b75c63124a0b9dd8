#pragma once

#include <memory>

#include "gpsengine/platform/event.h"
#include "gpsengine/platform/thread.h"

/// What one run's thread owns of the run: its events. A thread that comes back late, from a message box or a
/// callback, finds its own run over, whatever has been started since.
class CRun {
 public:
  /// `nEnds` is CEngineLease::Ends at the start of the run.
  explicit CRun(int nEnds)
      : m_hStop(CreateEventW(true, false)), m_hDone(CreateEventW(true, false)), m_nEnds(nEnds) {}
  ~CRun() {
    CloseHandle(m_hStop);
    CloseHandle(m_hDone);
  }
  CRun(const CRun&) = delete;
  CRun& operator=(const CRun&) = delete;

  HANDLE StopEvent() const { return m_hStop; }
  HANDLE DoneEvent() const { return m_hDone; }
  bool IsStopping() const { return WaitForSingleObject(m_hStop, 0) != WAIT_TIMEOUT; }
  int Ends() const { return m_nEnds; }

  std::unique_ptr<CWinThread> m_pThread;  ///< For the host's side.

 private:
  const HANDLE m_hStop;
  const HANDLE m_hDone;
  const int m_nEnds;
};
