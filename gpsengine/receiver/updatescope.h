#pragma once

#include <atomic>

/// Passes through a decoder when the run ended during a call out to the host. What the decoder had in hand
/// belongs to a run that is over, and the working records may be another run's by now.
struct RunIsOver {};

/// How a decoder learns that the run has ended. The engine makes one around each update, on the thread that
/// decodes.
class CUpdateScope {
 public:
  /// `ends` counts the ends of runs; the update is over once it is no longer `at_start`.
  CUpdateScope(const std::atomic<int>& ends, int at_start);
  ~CUpdateScope();
  CUpdateScope(const CUpdateScope&) = delete;
  CUpdateScope& operator=(const CUpdateScope&) = delete;

  bool IsOver() const { return m_Ends.load(std::memory_order_acquire) != m_nEnds; }
  /// For a decoder, after each call out to the host: throws RunIsOver if the calling thread's update is over.
  static void GoOn();

 private:
  const std::atomic<int>& m_Ends;
  const int m_nEnds;
  const CUpdateScope* const m_pOuter;
};
