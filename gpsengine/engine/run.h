#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/thread.h"

/// What one run's thread owns of the run: its events. A thread that comes back late, from a message box or a
/// callback, finds its own run over, whatever has been started since.
class CRun {
 public:
  CRun() : m_hStop(CreateEventW(true, false)), m_hDone(CreateEventW(true, false)) {}
  ~CRun() {
    CloseHandle(m_hStop);
    CloseHandle(m_hDone);
  }
  CRun(const CRun&) = delete;
  CRun& operator=(const CRun&) = delete;

  HANDLE StopEvent() const { return m_hStop; }
  HANDLE DoneEvent() const { return m_hDone; }
  bool IsStopping() const { return WaitForSingleObject(m_hStop, 0) != WAIT_TIMEOUT; }
  /// Nobody waits for the run's thread any more, and it must touch nothing of the engine's.
  void Abandon() { m_bAbandoned = true; }
  bool IsAbandoned() const { return m_bAbandoned; }

  std::unique_ptr<CWinThread> m_pThread;  ///< For the host's side.

 private:
  const HANDLE m_hStop;
  const HANDLE m_hDone;
  std::atomic<bool> m_bAbandoned{false};
};

/// A reader thread's hold on the engine. The thread takes it for each step that touches the engine or its
/// receivers, and gives it up while it reads, waits or shows a box. So two threads of two runs never decode
/// at once, and an engine that goes away waits for the step at hand and no longer.
class CEngineLease {
 public:
  explicit CEngineLease(CGPSEngine* pEngine) : m_pEngine(pEngine) {}

  std::recursive_mutex& Mutex() { return m_Mutex; }
  /// The engine, or null if it has gone. With the mutex held.
  CGPSEngine* Engine() const { return m_pEngine; }
  void Withdraw() {
    const std::lock_guard lock(m_Mutex);
    m_pEngine = nullptr;
  }

 private:
  // Recursive, since a callback of the host runs inside a step and may call the engine.
  std::recursive_mutex m_Mutex;
  CGPSEngine* m_pEngine;
};
