#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/serial.h"

#pragma GCC visibility push(default)

/// Runs code that uses a serial port without a port and without delay: writes and waits are recorded as a
/// list of steps. During its lifetime the port number maps to a line of its own, and on the thread that
/// created it sleeps and waits return at once, with simulated time advanced. Other threads keep the real
/// clock. One object at a time.
class CRehearsal : public Clock {
 public:
  /// The kind of a step.
  enum class StepKind {
    write,           ///< Bytes to the line.
    sleep,           ///< A pause.
    waitForMessage,  ///< A wait for an acknowledgement, say.
  };
  /// One action of the code under rehearsal.
  struct Step {
    StepKind kind;      ///< Tells which of the other fields is used.
    std::string bytes;  ///< What was written.
    DWORD ms = 0;       ///< Milliseconds waited.
  };

  /// With `bPortOpens` false, opening the port fails.
  explicit CRehearsal(int nPort = 1, bool bPortOpens = true);
  ~CRehearsal() override;
  CRehearsal(const CRehearsal&) = delete;
  CRehearsal& operator=(const CRehearsal&) = delete;

  /// Called with each step as it happens; for waitForMessage, before the wait.
  void SetStepHandler(std::function<void(const Step&)> handler);
  /// All steps so far, in order; valid until the next step.
  const std::vector<Step>& GetSteps() const;
  /// The steps so far, each as by Describe, joined by "; ".
  std::string Transcript() const;
  /// Clears the list; time continues.
  void ForgetSteps();
  /// A step as text: write "$JOFF\r\n", with control characters escaped; write-hex A0A2…, if the bytes are
  /// not text; wait 1000; wait-ack 10000.
  static std::string Describe(const Step& step);

  /// Lets bytes arrive on the line now, or in `msFromNow` milliseconds of simulated time.
  void Feed(std::string_view bytes, DWORD msFromNow = 0);
  /// Sets the error flags that the line reports when next asked.
  void SetLineErrors(DWORD nErrors);
  /// Limits further writes to this many bytes.
  void LimitWrites(int nBytes);
  /// Wants a stop after another `ms` of simulated time. A wait in progress still completes.
  void StopAfter(DWORD ms);
  /// Advances time without a step.
  void Advance(DWORD ms);
  /// Sets the date, which advances with the simulated time.
  void SetUnixSeconds(std::int64_t seconds);

  std::uint64_t Milliseconds() override;
  std::int64_t UnixSeconds() override;
  /// Recorded as a step; advances time.
  void Sleep(DWORD ms) override;
  bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) override;
  bool WantsStop() override;

 private:
  class Line;
  struct State;

  const int m_nPort;
  const SerialLineFactory m_LineBefore;
  Clock* const m_pClockBefore;
  const std::shared_ptr<State> m_pState;  // shared with the line, which may live longer
};

#pragma GCC visibility pop
