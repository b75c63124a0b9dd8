#pragma once

#include <string>
#include <string_view>

#include "gpsengine/face/answerreader.h"
#include "gpsengine/face/rehearse.h"
#include "host/run/face.h"

namespace host {

/// What became of a command that sets something: what was sent, and what the line has answered.
class Outcome {
 public:
  /// `transcript` is the rehearsal of the command.
  explicit Outcome(Transcript transcript);

  /// The line that the command went out on, and what the library made of its data.
  struct Line {
    std::string device, model;
    int baud;           ///< 0 for a line whose rate is set elsewhere.
    bool understood;    ///< Some message was.
    long long reports;  ///< How many were shown.
  };

  /// The next bytes of the line since the run began, in pieces of any size.
  void Feed(std::string_view bytes) { answers_.Feed(bytes); }
  /// How many seconds to listen after the end of the command, by what has been heard so far.
  double Patience(bool understood) const;
  /// What to tell the user. Throws a Failure if nothing was heard or understood, no answer came where the
  /// make gives one, or the receiver refused.
  std::string Tell(const Line& line) const;
  /// What to tell of a command that was interrupted when it had sent that much.
  std::string TellInterrupted(const std::string& operation, const Transcript& sent) const;

 private:
  bool IsAwaited() const;

  const Transcript transcript_;
  AnswerReader answers_;
};

/// The end of a question whether the model is right, and the rate: ", at 4800 baud? ..."; 0 for a line whose
/// rate is set elsewhere.
std::string RateDoubt(int baud);

}  // namespace host
