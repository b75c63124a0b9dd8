#pragma once

#include <memory>

#include "gpsengine/platform/event.h"
#include "gpsengine/platform/thread.h"

/// The state of one run, kept alive by its thread. A thread that returns late from a message box or a
/// callback finds its own run over, even if another one has been started.
class CRun {
 public:
  /// `ends` is CEngineLease::Ends at the start of the run.
  explicit CRun(int ends)
      : m_hStop(CreateEventW(true, false)), m_hDone(CreateEventW(true, false)), m_nEnds(ends) {}
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

  std::unique_ptr<CWinThread> m_pThread;  ///< Used by the host's thread.

 private:
  const HANDLE m_hStop;
  const HANDLE m_hDone;
  const int m_nEnds;
};
