#pragma once

#include <atomic>
#include <mutex>

#include "gpsengine/engine/gpsengine.h"

/// Exclusive access to the engine. A reader thread holds it for each step that touches the engine or its
/// receivers, and releases it while it reads, waits or shows a message box; a host thread that feeds bytes
/// does the same. So only one thread decodes at a time, and the engine's destructor waits for the current
/// step.
///
/// A step that calls out to the host may never return. The destructor waits a second at most; if the step
/// returns later, it finds the engine gone. The lease outlives both.
class CEngineLease {
 public:
  explicit CEngineLease(CGPSEngine* engine);
  ~CEngineLease();
  CEngineLease(const CEngineLease&) = delete;
  CEngineLease& operator=(const CEngineLease&) = delete;

  /// The scope of a step on the engine. Steps may nest: a host callback runs inside one and may call the
  /// engine.
  class Hold {
   public:
    explicit Hold(CEngineLease& lease);
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    CEngineLease& m_Lease;
    bool m_bWasOutside;
  };

  /// Within a step, the scope of a call into host code, during which the step does not touch the engine.
  /// Afterwards the step checks IsEngineThere.
  class Outside {
   public:
    explicit Outside(CEngineLease& lease) : m_Lease(lease) {
      lease.m_bOutside.store(true, std::memory_order_release);
    }
    ~Outside() { m_Lease.m_bOutside.store(false, std::memory_order_release); }
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;

   private:
    CEngineLease& m_Lease;
  };

  /// Within a step: the engine exists, and will until the step calls out or ends.
  bool IsEngineThere() {
    if (!m_bLeaving.load(std::memory_order_acquire)) return true;
    const std::lock_guard lock(m_LeaveMutex);
    return m_pEngine != nullptr;
  }
  /// Within a step: the engine, or null if it has been destroyed.
  CGPSEngine* Engine() { return IsEngineThere() ? m_pEngine : nullptr; }
  /// The calling thread is inside a step.
  bool IsHeldHere() const;

  /// Number of ended runs. A run is over once this differs from its value at the start.
  const std::atomic<int>& Ends() const { return m_nEnds; }
  /// Ends the run that started at `ends`, unless it has ended.
  void EndRun(int ends) { m_nEnds.compare_exchange_strong(ends, ends + 1); }

  /// The engine's destructor has begun.
  void BeginLeaving();
  /// Withdraws the engine, at most a second after BeginLeaving or as soon as a step that does not call out
  /// has ended. False if a step is still in host code; its receiver must then be kept.
  bool Withdraw();

 private:
  bool TakeAway(bool at_any_rate);

  std::recursive_mutex m_Mutex;
  std::atomic<const void*> m_pHolder{nullptr};  // an address unique to the holding thread
  int m_nDepth = 0;                             // nesting depth of steps, guarded by m_Mutex
  std::atomic<bool> m_bOutside{false};
  std::atomic<int> m_nEnds{0};

  std::atomic<bool> m_bLeaving{false};
  std::uint64_t m_nLeavingSince = 0;  // milliseconds
  const HANDLE m_hFree;               // signalled when a step ends while the destructor waits
  std::mutex m_LeaveMutex;
  CGPSEngine* m_pEngine;  // changed under m_LeaveMutex
};
