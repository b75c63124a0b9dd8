#include "host/commands/command.h"

#include "gpsengine/engine/gpsengine.h"
#include "host/commands/models.h"
#include "host/commands/outcome.h"
#include "host/commands/rehearse.h"
#include "host/line/config.h"
#include "host/line/source.h"
#include "host/line/wiretap.h"
#include "host/records/hostwindow.h"
#include "host/records/textsink.h"
#include "host/run/boxes.h"
#include "host/run/pacing.h"
#include "host/run/waiter.h"

namespace host {

namespace {

// How long an answer may take, and how long a silence ends an answer of several reports.
constexpr double kAnswerTime = 5.0;
constexpr double kAnswerGap = 1.0;
// How often the bytes are looked at for answers that are no messages.
constexpr std::chrono::milliseconds kTapInterval{100};

/// One operation on a live receiver.
class LiveCommand {
 public:
  LiveCommand(const CommandOptions& options, const Operation& operation, const Transcript& transcript,
              const Interrupt& interrupt, Output& output)
      : options_(options),
        operation_(operation),
        interrupt_(interrupt),
        output_(output),
        receiver_(SelectModel(engine_, options.model)),
        sink_(output.Text(), TextSink::Shows::reports),
        window_(sink_),
        outcome_(transcript) {}
  ~LiveCommand() { boxes_.Release(); }

  /// `time` is how long the operation and the start of the run take, in milliseconds.
  ExitCode Go(const Action& action, long long time);

 private:
  void SetUp();
  bool Perform(const Action& action, long long time);
  bool ShowsReports() const { return IsRequest() || options_.listen; }
  bool IsRequest() const { return operation_.kind == Operation::Kind::asks; }
  bool IsSetting() const { return operation_.kind == Operation::Kind::sets; }
  ExitCode Listen();
  void DecodeParameterLines();
  bool HasUnderstood() const;
  void FailIfItDidNotWork() const;

  const CommandOptions& options_;
  const Operation& operation_;
  const Interrupt& interrupt_;
  Output& output_;
  // What the reader thread meets outlives the engine.
  Boxes boxes_;
  std::optional<Source> source_;
  CGPSEngine engine_;
  CGPSReceiver& receiver_;
  TextSink sink_;
  HostWindow window_;
  std::optional<PortWatch> watch_;
  std::optional<WireTap> tap_;
  ParameterLines parameters_;
  Outcome outcome_;
  Result result_ = Result::none;
};

ExitCode LiveCommand::Go(const Action& action, long long time) {
  SetUp();
  if (!Perform(action, time)) return ExitCode::interrupted;
  const ExitCode code = Listen();
  engine_.Stop();
  DecodeParameterLines();
  if (HasUnderstood()) KeepRate(receiver_);
  if (code == ExitCode::done) FailIfItDidNotWork();
  return code;
}

void LiveCommand::SetUp() {
  SelectReceiver(engine_, receiver_, options_.baud);
  engine_.m_bAttachRawData = receiver_.HasRawData();
  tap_.emplace(engine_);
  if (ShowsReports()) engine_.m_ComBuffer.m_bPaused = false;
  source_.emplace(options_.port, receiver_);
  watch_.emplace(source_->Device());
}

bool LiveCommand::Perform(const Action& action, long long time) {
  const PacingClock::Sequence sequence(interrupt_, operation_.name, time);
  std::optional<long long> begun;
  try {
    StartEngine(engine_, *source_, *watch_);
    begun = sequence.Passed();
    if (operation_.kind != Operation::Kind::starts) result_ = action(receiver_);
  } catch (const PacingClock::Interrupted&) {
    Complain(outcome_.TellInterrupted(operation_.name, begun ? sequence.Passed() - *begun : -1));
    return false;
  }
  return true;
}

ExitCode LiveCommand::Listen() {
  Deadline end;
  const auto begun = Deadline::Clock::now();
  end.Set(options_.listen.value_or(IsRequest() || IsSetting() ? kAnswerTime : 0.0));
  Waiter waiter(interrupt_, output_, *watch_);
  for (std::size_t answers = 0;;) {
    window_.Drain();
    const std::string bytes = tap_->Take();
    parameters_.Feed(bytes);
    outcome_.Feed(bytes);
    if (!output_.Flush() || waiter.IsReaderGone()) return ExitCode::done;
    if (interrupt_.HasCome()) return ExitCode::interrupted;
    if (watch_->IsLost()) throw PortLost(source_->Device());
    const auto so_far = static_cast<std::size_t>(window_.Shown()) + parameters_.Lines().size();
    if (IsRequest() && !options_.listen && so_far > answers) end.Set(kAnswerGap);
    answers = so_far;
    const std::chrono::duration<double> listened = Deadline::Clock::now() - begun;
    const bool settled =
        IsSetting() && !options_.listen && listened.count() >= outcome_.Patience(HasUnderstood());
    if (settled || end.HasPassed()) return ExitCode::done;
    waiter.Wait(end.Earlier(Deadline::Clock::now() + kTapInterval));
  }
}

void LiveCommand::DecodeParameterLines() {
  // Parse belongs to the reader thread as long as there is one.
  for (const std::string& line : parameters_.Lines()) {
    CString text(line.data(), static_cast<int>(line.size()));
    receiver_.Parse(text);
  }
  window_.Drain();
  output_.Flush();
}

bool LiveCommand::HasUnderstood() const {
  return receiver_.GetSentencesRecognised() > receiver_.GetChecksumErrors() ||
         window_.GetPublished().All() > 0;
}

void LiveCommand::FailIfItDidNotWork() const {
  const std::string name = operation_.name;
  if (result_ == Result::no) {
    throw Failure(ExitCode::refused,
                  options_.arguments.wait
                      ? name + " was not acknowledged in time"
                      : name +
                            " did not work: the receiver's port did not take it, or the model "
                            "does not take these arguments");
  }
  if (IsSetting() && options_.listen == 0.0) return;  // the user wants to hear nothing
  if (IsSetting()) {
    return Complain(outcome_.Tell({source_->Device(), options_.model, receiver_.GetCurrentBaudrate(),
                                   HasUnderstood(), window_.Shown()}));
  }
  if (!IsRequest() || window_.Shown() > 0) return;
  const std::string nothing = "no report answered " + name;
  if (!tap_->HasHeard()) {
    throw Failure(ExitCode::refused, nothing + ", and no data came from " + source_->Device() +
                                         ": check that the receiver is on, and its cable");
  }
  throw Failure(ExitCode::refused, nothing + "; is it a " + options_.model + " at " +
                                       std::to_string(receiver_.GetCurrentBaudrate()) +
                                       " baud? --baud auto tries others");
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
  throw Failure(ExitCode::refused, "the model " + options.model + " does not offer " + operation.name +
                                       "; it offers " + names + ". --force sends it all the same");
}

Action PrepareFor(const CommandOptions& options, const Operation& operation) {
  CGPSEngine engine;
  return Prepare(operation, options.arguments, SelectModel(engine, options.model));
}

}  // namespace

ExitCode Command(const CommandOptions& options, const Interrupt& interrupt, Output& output) {
  const Operation& operation = FindOperation(options.operation);
  const Action action = PrepareFor(options, operation);
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
  return LiveCommand(options, operation, transcript, interrupt, output).Go(action, time);
}

}  // namespace host
