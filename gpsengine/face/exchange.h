#pragma once

#include <string>
#include <string_view>

#include "gpsengine/face/answerreader.h"
#include "gpsengine/face/operations.h"
#include "gpsengine/platform/monitor.h"
#include "gpsengine/sentences/sentencefinder.h"

namespace gps {

/// What is written to a receiver and what it answers, for a command that waits for the answer. From any
/// thread.
class Exchange {
 public:
  explicit Exchange(CGPSReceiver& receiver) : receiver_(&receiver) {}

  /// A command begins, for which nothing counts that was before.
  void Begin();
  void OnWritten(std::string_view line);
  /// On the thread that reads. Hands the receiver the lines of a parameter report, which the framing of
  /// messages passes over.
  void OnRead(std::string_view bytes);
  void OnReport();
  /// The line has gone, or the receiver is to go.
  void End();

  /// Waits until the command is answered: a request by reports, another one line by line, in a language that
  /// does so. Throws an Error if it is not, or was refused. A stop and the end of the line end the wait.
  void Await(const Operation& operation, const std::string& model, const std::stop_token& stop);

 private:
  void AwaitReports(Monitor::Lock& lock, const std::string& name, const std::string& model,
                    const std::stop_token& stop);
  void AwaitWords(Monitor::Lock& lock, const std::string& name, const std::string& model,
                  const std::stop_token& stop);
  template <class Ready>
  bool Wait(Monitor::Lock& lock, const std::stop_token& stop, double seconds, Ready ready);

  Monitor monitor_;         // for what follows
  CGPSReceiver* receiver_;  // null at the end
  SentenceFinder finder_;
  AnswerReader answers_;
  int asked_ = 0, reports_ = 0;
};

}  // namespace gps
