#include "host/command.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gpsengine/face/models.h"
#include "gpsengine/face/rehearse.h"
#include "gpsengine/face/words.h"
#include "gpsengine/sentences/sentencefinder.h"
#include "host/commands/outcome.h"
#include "host/line/port.h"
#include "host/records/textsink.h"
#include "host/run/face.h"
#include "host/session/linefeed.h"

namespace host {

namespace {

// How long a silence ends an answer of several reports.
constexpr double kAnswerGap = 1.0;

/// The outlet that shows what answers an operation, until that is all.
class Answers : public Outlet {
 public:
  Answers(const CommandOptions& options, const Operation& operation, Outcome& outcome, Session& session,
          Output& output)
      : options_(options),
        operation_(operation),
        outcome_(outcome),
        session_(session),
        sink_(output.Text(), TextSink::Shows::reports) {}

  Sink* Records() override { return &sink_; }
  bool WantsTexts() const override { return Asks() || options_.listen; }
  void OnBytes(std::string_view bytes) override;
  void OnEvent(RunEvent event) override;
  Deadline::Moment NextAt() const override { return settled_.Earlier(end_.Earlier(Deadline::kNever)); }
  void Step() override;
  bool IsDone() const override { return settled_.HasPassed() || end_.HasPassed(); }
  bool Finish() override;

 private:
  bool Asks() const { return operation_.kind == Operation::Kind::asks; }
  bool Sets() const { return operation_.kind == Operation::Kind::sets; }

  const CommandOptions& options_;
  const Operation& operation_;
  Outcome& outcome_;
  Session& session_;
  TextSink sink_;
  SentenceFinder finder_;
  std::vector<std::string> lines_;  // of parameters
  std::size_t answers_ = 0;
  Deadline::Moment begun_;  // the zero of the clock: not yet
  Deadline end_, settled_;
};

void Answers::OnEvent(RunEvent event) {
  if (event != RunEvent::started) return;
  begun_ = Deadline::Clock::now();
  end_.Set(options_.listen.value_or(Asks() || Sets() ? AnswerReader::kForReports : 0.0));
}

void Answers::OnBytes(std::string_view bytes) {
  outcome_.Feed(bytes);
  finder_.Feed(bytes, [this](std::string_view text) {
    if (IsParameterLine(text)) lines_.emplace_back(text.substr(0, text.size() - 2));
  });
}

void Answers::Step() {
  if (options_.listen || begun_ == Deadline::Moment()) return;
  const auto so_far = static_cast<std::size_t>(session_.Window().Shown()) + lines_.size();
  if (Asks() && so_far > answers_) end_.Set(kAnswerGap);
  answers_ = so_far;
  const std::chrono::duration<double> listened = Deadline::Clock::now() - begun_;
  if (Sets()) settled_.Set(outcome_.Patience(session_.Understood() > 0) - listened.count());
}

// Parse belongs to the reader thread as long as there is one.
bool Answers::Finish() {
  for (const std::string& line : lines_) {
    CString text(line.data(), static_cast<int>(line.size()));
    session_.Receiver().Parse(text);
  }
  session_.PassOn();
  return true;
}

/// 0 if the line's rate is set elsewhere.
int RateOf(const Session& session) {
  return session.GetFeed().GetPort()->HasRate() ? session.Receiver().GetCurrentBaudrate() : 0;
}

void FailIfNothingAnswered(const CommandOptions& options, const Session& session) {
  if (session.Window().Shown() > 0) return;
  const std::string nothing = "no report answered " + options.operation;
  if (!session.HasHeard()) {
    throw Failure(ExitCode::refused, nothing + ", and no data came from " + session.GetFeed().Name() +
                                         ": check that the receiver is on, and its cable");
  }
  throw Failure(ExitCode::refused,
                nothing + ": is it the model " + options.model + RateDoubt(RateOf(session)));
}

/// Throws a Failure if it did not work, or tells what came of it.
void Judge(const CommandOptions& options, const Operation& operation, Result result, const Outcome& outcome,
           const Session& session) {
  CheckResult(operation, options.arguments, result);
  if (operation.kind == Operation::Kind::asks) FailIfNothingAnswered(options, session);
  // With a time of 0 the user wants to hear nothing.
  if (operation.kind != Operation::Kind::sets || options.listen == 0.0) return;
  Complain(outcome.Tell({session.GetFeed().Name(), options.model, RateOf(session), session.Understood() > 0,
                         session.Window().Shown()}));
}

struct Ending {
  ExitCode code;
  long long
      waited;  ///< By the operation until it ended or was stopped, in milliseconds; below 0: never begun.
};

/// `time` is how long the operation and the start of the run take, in milliseconds.
Ending CommandLive(const CommandOptions& options, const Operation& operation, const Action& action,
                   Outcome& outcome, long long time, const Interrupt& interrupt, Output& output) {
  Session session(options, interrupt, output);
  session.Read(std::make_unique<LineFeed>(options.port, options.model));
  Answers answers(options, operation, outcome, session, output);
  session.Add(answers);
  long long waited = -1;
  Result result = Result::none;
  RunRules rules;
  rules.label = operation.name;
  rules.time = time;
  rules.on_open = [&](CGPSReceiver& receiver) {
    const long long begun = PacingClock::Passed();
    if (operation.kind != Operation::Kind::starts) result = action(receiver);
    waited = PacingClock::StoppedAt().value_or(PacingClock::Passed() + 1) - begun;
  };
  const ExitCode code = session.Run(std::move(rules));
  if (code == ExitCode::done) Judge(options, operation, result, outcome, session);
  return {code, waited};
}

ExitCode PrintTranscript(const Transcript& transcript, Output& output) {
  output.Text() += transcript.Text() + "result " + NameOf(transcript.result) + '\n';
  output.Flush();
  return ExitCode::done;
}

}  // namespace

ExitCode Command(const CommandOptions& options, const Interrupt& interrupt, Output& output) {
  const Operation& operation = FindOperation(options.operation);
  const Action action = Prepare(operation, options.arguments, FindModel(options.model));
  if (options.port.empty() && !options.dry_run)
    throw Failure(ExitCode::usage, "--port or --dry-run is needed");
  if (!options.force) CheckOffer(operation, FindModel(options.model), ". --force sends it all the same");
  const Transcript transcript = Rehearse(options.model, action, !options.closed);
  if (options.dry_run) return PrintTranscript(transcript, output);
  if (!Port::Of(options.port)->TakesCommands()) throw OnlyListenedTo(options.port);
  if (HasNoEffect(operation, transcript)) throw NothingSent(operation, options.arguments, options.model);
  long long time = transcript.Time();
  if (operation.kind != Operation::Kind::starts) time += StartTimeOf(FindModel(options.model));
  Outcome outcome(transcript);
  const Ending ending = CommandLive(options, operation, action, outcome, time, interrupt, output);
  if (ending.code == ExitCode::interrupted) {
    // With the engine gone, what has been sent can be rehearsed.
    Transcript sent;
    if (ending.waited >= 0) sent = Rehearse(options.model, action, true, ending.waited);
    Complain(outcome.TellInterrupted(operation.name, sent));
  }
  return ending.code;
}

}  // namespace host
