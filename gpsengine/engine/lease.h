#pragma once

#include <atomic>
#include <mutex>

#include "gpsengine/engine/gpsengine.h"

/// A thread's hold on the engine. A reader thread takes it for each step that touches the engine or its
/// receivers, and gives it up while it reads, waits or shows a box; so does a host's thread that feeds bytes.
/// So no two threads decode at once, and an engine that goes away waits for the step at hand.
///
/// A step that has called out to the host may never come back. The engine does not wait for it for longer
/// than a second: it goes away meanwhile, and the step finds nothing to touch when it does come back. The
/// lease outlives both.
class CEngineLease {
 public:
  explicit CEngineLease(CGPSEngine* pEngine);
  ~CEngineLease();
  CEngineLease(const CEngineLease&) = delete;
  CEngineLease& operator=(const CEngineLease&) = delete;

  /// A step on the engine lasts as long as this object. Steps may stand in each other: a callback of the host
  /// runs inside one and may call the engine.
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

  /// Within a step, a call into what may be the host's code, during which the step touches nothing of the
  /// engine's. Behind it the step asks IsEngineThere.
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

  /// Within a step: the engine has not gone away, and will not until the step calls out or ends.
  bool IsEngineThere() {
    if (!m_bLeaving.load(std::memory_order_acquire)) return true;
    const std::lock_guard lock(m_LeaveMutex);
    return m_pEngine != nullptr;
  }
  /// Within a step: the engine, or null if it has gone away.
  CGPSEngine* Engine() { return IsEngineThere() ? m_pEngine : nullptr; }
  /// The calling thread is inside a step.
  bool IsHeldHere() const;

  /// How many runs have ended. What belongs to a run is void once this has moved on.
  const std::atomic<int>& Ends() const { return m_nEnds; }
  /// Ends the run that began at `nEnds`, unless that has been done.
  void EndRun(int nEnds) { m_nEnds.compare_exchange_strong(nEnds, nEnds + 1); }

  /// The engine is about to go away.
  void BeginLeaving();
  /// The engine goes away, a second after BeginLeaving at the latest, or when a step that does not call out
  /// has ended. False if a step is still outside, whose receiver must live on.
  bool Withdraw();

 private:
  bool TakeAway(bool bAtAnyRate);

  std::recursive_mutex m_Mutex;
  std::atomic<const void*> m_pHolder{nullptr};  // a place of the holding thread's own
  int m_nDepth = 0;                             // of the steps in each other, with m_Mutex held
  std::atomic<bool> m_bOutside{false};
  std::atomic<int> m_nEnds{0};

  std::atomic<bool> m_bLeaving{false};
  std::uint64_t m_nLeavingSince = 0;  // milliseconds
  const HANDLE m_hFree;               // a step has ended while the engine waited for it
  std::mutex m_LeaveMutex;
  CGPSEngine* m_pEngine;  // changed with m_LeaveMutex held
};
