#include "host/command.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/commands/models.h"
#include "host/commands/rehearse.h"
#include "host/line/sentences.h"
#include "host/records/textsink.h"
#include "host/session/linefeed.h"
#include "host/session/printer.h"

namespace host {

namespace {

// How long an answer may take, and how long a silence ends an answer of several reports.
constexpr double kAnswerTime = 5.0;
constexpr double kAnswerGap = 1.0;

/// The outlet that shows what answers an operation, until that is all.
class Answers : public Outlet {
 public:
  Answers(const CommandOptions& options, bool is_request, Session& session, Output& output)
      : options_(options),
        is_request_(is_request),
        session_(session),
        sink_(output.Text(), TextSink::Shows::reports) {}

  Sink* Records() override { return &sink_; }
  bool WantsTexts() const override { return AreWanted(); }
  void OnBytes(std::string_view bytes) override;
  void OnEvent(RunEvent event) override;
  Deadline::Moment NextAt() const override { return end_.Earlier(Deadline::kNever); }
  void Step() override;
  bool IsDone() const override { return end_.HasPassed(); }
  bool Finish() override;

 private:
  bool AreWanted() const { return is_request_ || options_.listen; }

  const CommandOptions& options_;
  const bool is_request_;
  Session& session_;
  TextSink sink_;
  SentenceFinder finder_;
  std::vector<std::string> lines_;  // of parameters
  std::size_t answers_ = 0;
  Deadline end_;
};

void Answers::OnEvent(RunEvent event) {
  if (event == RunEvent::started) end_.Set(options_.listen.value_or(is_request_ ? kAnswerTime : 0.0));
}

void Answers::OnBytes(std::string_view bytes) {
  if (!AreWanted()) return;
  finder_.Feed(bytes, [this](std::string_view text) {
    if (IsParameterLine(text)) lines_.emplace_back(text.substr(0, text.size() - 2));
  });
}

void Answers::Step() {
  const auto so_far = static_cast<std::size_t>(session_.Window().Shown()) + lines_.size();
  if (!options_.listen && so_far > answers_) end_.Set(kAnswerGap);
  answers_ = so_far;
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

void FailIfItDidNotWork(const CommandOptions& options, Result result) {
  if (result != Result::no) return;
  throw Failure(ExitCode::refused,
                options.operation + (options.arguments.wait
                                         ? " was not acknowledged in time"
                                         : " did not work: the receiver's port did not take it, or the model "
                                           "does not take these arguments"));
}

void FailIfNothingAnswered(const CommandOptions& options, const Session& session) {
  if (session.Window().Shown() > 0) return;
  const std::string nothing = "no report answered " + options.operation;
  if (!session.HasHeard()) {
    throw Failure(ExitCode::refused, nothing + ", and no data came from " + session.GetFeed().Name() +
                                         ": check that the receiver is on, and its cable");
  }
  throw Failure(ExitCode::refused, nothing + "; is it a " + options.model + " at " +
                                       std::to_string(session.Receiver().GetCurrentBaudrate()) +
                                       " baud? --baud auto tries others");
}

/// `time` is how long the operation and the start of the run take, in milliseconds.
ExitCode CommandLive(const CommandOptions& options, const Operation& operation, const Action& action,
                     long long time, const Interrupt& interrupt, Output& output) {
  Session session(options, interrupt);
  session.Read(std::make_unique<LineFeed>(options.port, options.model));
  const bool is_request = operation.kind == Operation::Kind::asks;
  // Its end comes ahead of the last flush.
  Printer printer(output);
  session.Add(printer);
  Answers answers(options, is_request, session, output);
  session.Add(answers);
  std::optional<Result> result;
  RunRules rules;
  rules.label = operation.name;
  rules.time = time;
  rules.on_open = [&](CGPSReceiver& receiver) {
    result = operation.kind == Operation::Kind::starts ? Result::none : action(receiver);
  };
  const ExitCode code = session.Run(std::move(rules));
  if (!result) Complain("interrupted: what was left of " + options.operation + " has not been sent");
  if (code != ExitCode::done) return code;
  FailIfItDidNotWork(options, *result);
  if (is_request) FailIfNothingAnswered(options, session);
  return code;
}

ExitCode PrintTranscript(const Transcript& transcript, Output& output) {
  output.Text() += transcript.Text() + "result " + NameOf(transcript.result) + '\n';
  output.Flush();
  return ExitCode::done;
}

/// Refuses what the model's capability answers do not open.
void CheckOffer(const CommandOptions& options, const Operation& operation) {
  CGPSEngine engine;
  CGPSReceiver& receiver = SelectModel(engine, options.model);
  if (options.force || IsOffered(operation, receiver)) return;
  std::string names;
  for (const Operation* offered : OperationsOf(receiver))
    names += std::string(names.empty() ? "" : ", ") + offered->name;
  throw Failure(ExitCode::refused, "the model " + options.model + " does not offer " + operation.name + " (" +
                                       operation.answer + " is false); it offers " + names +
                                       ". --force sends it all the same");
}

}  // namespace

ExitCode Command(const CommandOptions& options, const Interrupt& interrupt, Output& output) {
  const Operation& operation = FindOperation(options.operation);
  const Action action = Prepare(operation, options.arguments);
  if (options.port.empty() && !options.dry_run)
    throw Failure(ExitCode::usage, "--port or --dry-run is needed");
  CheckOffer(options, operation);
  const Transcript transcript = Rehearse(options.model, operation, action, !options.closed);
  if (options.dry_run) return PrintTranscript(transcript, output);
  if (HasNoEffect(operation, transcript)) {
    throw Failure(ExitCode::refused, "the model " + options.model + " has no " +
                                         CallText(operation, options.arguments) + ": nothing was sent");
  }
  long long time = transcript.Time();
  if (operation.kind != Operation::Kind::starts) {
    const Operation& start = FindOperation("start");
    time += Rehearse(options.model, start, Prepare(start, {})).Time();
  }
  return CommandLive(options, operation, action, time, interrupt, output);
}

}  // namespace host
