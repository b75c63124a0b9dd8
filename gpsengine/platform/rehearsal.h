#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/serial.h"

#pragma GCC visibility push(default)

/// Runs code that talks to a serial line with no line and in no time: what would be written and waited for
/// becomes a list of steps. While the object lives, the port number stands for a line of its own, and for the
/// thread that made it a sleep or a wait is recorded and time moves on at once. Other threads keep the real
/// clock. One at a time.
class CRehearsal : public Clock {
 public:
  /// What a step is.
  enum class StepKind {
    write,           ///< Bytes to the line.
    sleep,           ///< A pause.
    waitForMessage,  ///< A wait for an acknowledgement, say.
  };
  /// One thing that the code under rehearsal did.
  struct Step {
    StepKind kind;      ///< Tells which of the others counts.
    std::string bytes;  ///< What was written.
    DWORD ms = 0;       ///< How long was waited.
  };

  /// `bPortOpens` false: the port is one that does not open.
  explicit CRehearsal(int nPort = 1, bool bPortOpens = true);
  ~CRehearsal() override;
  CRehearsal(const CRehearsal&) = delete;
  CRehearsal& operator=(const CRehearsal&) = delete;

  /// Called with each step as it happens, a wait for a message ahead of the wait.
  void SetStepHandler(std::function<void(const Step&)> handler);
  /// All steps so far, in their order; good until the next one.
  const std::vector<Step>& GetSteps() const;
  /// The steps so far, as Describe puts them, joined by "; ".
  std::string Transcript() const;
  /// Starts the list over; time goes on.
  void ForgetSteps();
  /// A step as text: write "$JOFF\r\n", with control characters escaped; write-hex A0A2…, if the bytes are no
  /// text; wait 1000; wait-ack 10000.
  static std::string Describe(const Step& step);

  /// Bytes that arrive on the line now, or in `msFromNow` milliseconds of rehearsed time.
  void Feed(std::string_view bytes, DWORD msFromNow = 0);
  /// The line reports these error flags at the next question.
  void SetLineErrors(DWORD nErrors);
  /// From now on a write takes at most this many bytes.
  void LimitWrites(int nBytes);
  /// Wants a stop once `ms` more of rehearsed time have passed. A wait under way is still taken whole.
  void StopAfter(DWORD ms);
  /// Moves time on without a step.
  void Advance(DWORD ms);
  /// Sets the date, which moves on with the rehearsed time.
  void SetUnixSeconds(std::int64_t seconds);

  std::uint64_t Milliseconds() override;
  std::int64_t UnixSeconds() override;
  /// Becomes a step, and time has passed.
  void Sleep(DWORD ms) override;
  bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) override;
  bool WantsStop() override;

 private:
  class Line;
  struct State;

  void AddStep(Step step);

  const int m_nPort;
  const SerialLineFactory m_LineBefore;
  Clock* const m_pClockBefore;
  const std::shared_ptr<State> m_pState;  // shared with the line, which the port may keep for longer
};

#pragma GCC visibility pop
