#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "gpsengine/platform/serial.h"
#include "tests/support/receivertest.h"

/// Command operations on a rehearsed line: what they write, how long they wait, what they give back.
template <class Receiver>
class DriverTest : public ReceiverTest<Receiver> {
 protected:
  /// An operation with the steps that it takes, one line a command, as in
  ///     write "$JSAVE\r\n"; wait 2000
  /// An operation with a result ends in "result true" or "result false".
  struct Case {
    template <class Operation>
    Case(Operation operation, std::string_view open, std::string_view closed = "")
        : run(Reported(operation)), steps(open), stepsIfClosed(closed) {}

    std::function<std::string(Receiver&)> run;
    std::string_view steps;
    std::string_view stepsIfClosed;
  };

  /// What an operation does, and its result.
  template <class Operation>
  std::string Steps(Operation operation) {
    this->line.ForgetSteps();
    return WithResult(Reported(operation)(this->receiver));
  }

  /// Runs all cases on an open port, then on a closed one.
  void Check(const std::vector<Case>& cases) {
    for (const Case& c : cases) EXPECT_EQ(Steps(c.run), Joined(c.steps));
    Close();
    for (const Case& c : cases)
      EXPECT_EQ(Steps(c.run), Joined(c.stepsIfClosed)) << "closed, instead of " << c.steps;
  }

  void Close() {
    this->receiver.Suspend();
    this->line.ForgetSteps();
  }

  /// From now on the port is closed and does not open.
  void Unplug() {
    MapComPort(kNoPort, [] { return std::unique_ptr<SerialLine>(); });
    this->receiver.SetupReceiver(kNoPort, 0, 0.0, "", false);
    Close();
  }

  /// Answers each wait for an acknowledgement, or those of its own choice.
  void Acknowledge(std::function<bool(int nWait)> answers = [](int) { return true; }) {
    m_nWaits = 0;
    this->line.SetStepHandler([this, answers](const CRehearsal::Step& step) {
      if (step.kind == CRehearsal::StepKind::waitForMessage && answers(++m_nWaits))
        this->Feed("$PASHR,ACK\r\n");
    });
  }

  /// The lines of a text, without their blanks ahead, as a transcript.
  static std::string Joined(std::string_view lines) {
    std::string joined;
    while (!lines.empty()) {
      const std::size_t end = std::min(lines.find('\n'), lines.size());
      std::string_view step = lines.substr(0, end);
      step.remove_prefix(std::min(step.find_first_not_of(' '), step.size()));
      if (!step.empty()) joined += (joined.empty() ? "" : "; ") + std::string(step);
      lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return joined;
  }

 private:
  static constexpr int kNoPort = 99;
  int m_nWaits = 0;

  template <class Operation>
  static std::function<std::string(Receiver&)> Reported(Operation operation) {
    using Result = std::invoke_result_t<Operation, Receiver&>;
    return [operation](Receiver& receiver) -> std::string {
      if constexpr (std::same_as<Result, std::string>) {
        return std::invoke(operation, receiver);
      } else if constexpr (std::same_as<Result, bool>) {
        return std::invoke(operation, receiver) ? "result true" : "result false";
      } else {
        std::invoke(operation, receiver);
        return "";
      }
    };
  }

  std::string WithResult(const std::string& result) const {
    const std::string steps = this->line.Transcript();
    return steps.empty() || result.empty() ? steps + result : steps + "; " + result;
  }
};
