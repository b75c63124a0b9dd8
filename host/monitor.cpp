#include "host/monitor.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/serial.h"
#include "host/commands/models.h"
#include "host/commands/rawdata.h"
#include "host/line/config.h"
#include "host/line/reconnect.h"
#include "host/line/recorder.h"
#include "host/line/source.h"
#include "host/line/wiretap.h"
#include "host/records/fixage.h"
#include "host/records/hostwindow.h"
#include "host/run/boxes.h"
#include "host/run/kindlistener.h"
#include "host/run/player.h"
#include "host/run/portwatch.h"
#include "host/run/waiter.h"
#include "host/tui/livescreen.h"

namespace host {

namespace {

/// What the reader has in hand when its port goes away still reaches the host within this time.
constexpr std::chrono::milliseconds kLastRecords{400};
/// How often what the port sends goes on to the file that records it.
constexpr std::chrono::milliseconds kRecordInterval{100};

class Run {
 public:
  Run(const MonitorOptions& options, const Interrupt& interrupt, Output& output);
  ~Run() { boxes_.Release(); }

  ExitCode Go();

 private:
  bool IsPlayback() const { return !options_.play.empty(); }
  void OpenScreen();
  void PrepareScreen();
  std::unique_ptr<LiveScreen::Busy> BeBusy();
  bool IsPaced() const { return options_.speed > 0.0; }
  void Start(Sink& first);
  void StartLive();
  void AskForRawData();
  void MakeSinks();
  void TakeNote();
  void WaitForPort();
  void Reopen();
  Deadline::Clock::time_point NextDeadline() const;
  std::optional<ExitCode> Ending();
  bool HasUnderstood() const;
  bool IsLost() const { return watch_->IsLost() || (reconnect_ && reconnect_->IsWaiting()); }
  bool HasHeard() const;
  void FailIfNothingUnderstood(double seconds) const;

  const MonitorOptions& options_;
  const Interrupt& interrupt_;
  Output& output_;
  // What the reader thread meets outlives the engine.
  Boxes boxes_;
  std::optional<Source> source_;
  CGPSEngine engine_;
  CGPSReceiver& receiver_;
  std::unique_ptr<Sink> shown_, sink_;
  Exports* exports_ = nullptr;  // in sink_
  std::optional<RinexSink> rinex_;
  std::optional<HostWindow> window_;
  std::optional<PortWatch> watch_;
  std::optional<Player> player_;
  std::optional<WireTap> tap_;  // until something was understood
  std::optional<Recorder> recorder_;
  std::optional<Reconnect> reconnect_;
  FixAge* fix_age_ = nullptr;  // in sink_, for people
  bool noted_ = false;         // that something was understood
  Deadline end_, first_message_, last_record_;
  std::optional<LiveScreen> screen_;  // the last, so that its terminal is given back first
};

Run::Run(const MonitorOptions& options, const Interrupt& interrupt, Output& output)
    : options_(options),
      interrupt_(interrupt),
      output_(output),
      receiver_(SelectModel(engine_, options.model)) {}

ExitCode Run::Go() {
  if (!options_.rinex.base.empty() && !IsPlayback() && !receiver_.HasRawData()) {
    throw Failure(ExitCode::usage, "the model " + options_.model + " has no raw data to log");
  }
  if (options_.rinex.interval > 0.0 && !IsPlayback()) CheckRawInterval(receiver_, options_.rinex.interval);
  if (options_.format == Format::tui) OpenScreen();
  SelectReceiver(engine_, receiver_, options_.baud, options_.geoid, options_.antenna_height, IsPaced());
  if (!IsPlayback()) source_.emplace(options_.port, receiver_);
  MakeSinks();
  const bool logs = !options_.rinex.base.empty();
  engine_.m_bAttachRawData = logs || options_.attach_raw.value_or(IsPaced() || receiver_.HasRawData());
  if (logs) rinex_.emplace(options_.rinex, options_.model, options_.antenna_height, *sink_);
  Sink& first = rinex_ ? *rinex_ : *sink_;
  window_.emplace(first, options_.count);
  watch_.emplace(source_ && !source_->IsSimulated() ? source_->Device() : "");
  if (screen_) PrepareScreen();
  try {
    Start(first);
  } catch (const PacingClock::Interrupted&) {
    return interrupt_.HasCome() ? ExitCode::interrupted : ExitCode::done;
  }

  if (options_.duration > 0.0 && !IsPaced()) end_.Set(options_.duration);
  if (options_.timeout > 0.0 && !IsPlayback()) first_message_.Set(options_.timeout);
  Waiter waiter(interrupt_, output_, *watch_);
  if (screen_) waiter.Watch(screen_->Descriptor());
  std::optional<ExitCode> ending;
  while (!ending) {
    waiter.Wait(NextDeadline());
    if (player_) player_->Play(engine_);
    window_->Drain();
    if (fix_age_ != nullptr) fix_age_->Check();
    if (recorder_) recorder_->Take();
    if (rinex_) rinex_->Check();
    exports_->Check();
    if (screen_) screen_->Step();
    ending = !output_.Flush() || waiter.IsReaderGone() ? ExitCode::done : Ending();
  }
  boxes_.Release();
  if (screen_) screen_->Close();
  engine_.Stop();
  window_->Drain();
  output_.Flush();
  exports_->Finish();
  if (rinex_ && !rinex_->Finish() && ending == ExitCode::done) return ExitCode::failed;
  return *ending;
}

void Run::MakeSinks() {
  const std::string& device = IsPlayback() ? options_.play : source_->Device();
  shown_ = screen_ ? std::move(sink_) : MakeSink(options_.format, output_.Text(), device, options_.geoid);
  const bool simulated = source_ && source_->IsSimulated();
  const RunFacts facts{simulated ? "simulated receiver" : device, options_.model, options_.geoid};
  ExportOptions filtered = options_.exports;
  if (IsPaced()) filtered.filter.duration = options_.duration;
  auto exports = std::make_unique<Exports>(filtered, facts, options_.play, engine_, *shown_);
  exports_ = exports.get();
  if (screen_ && exports_->NeedsTexts()) screen_->KeepTexts();
  sink_ = std::move(exports);
  if (options_.format != Format::text) return;
  auto fix_age =
      std::make_unique<FixAge>(std::move(sink_), output_.Text(), [this] { return engine_.GetMessages(); });
  fix_age_ = fix_age.get();
  sink_ = std::move(fix_age);
}

void Run::OpenScreen() {
  auto readings = std::make_unique<Readings>();
  screen_.emplace(*readings, engine_, receiver_, interrupt_);
  sink_ = std::move(readings);
  boxes_.GiveUpKeyboard();
}

void Run::PrepareScreen() {
  const std::string baud = std::to_string(receiver_.GetCurrentBaudrate()) + " baud";
  screen_->SetSource(IsPlayback()             ? "playing " + options_.play
                     : source_->IsSimulated() ? source_->Device() + "  simulated"
                                              : source_->Device() + "  " + baud);
  screen_->OnDrain([this] { window_->Drain(); });
  screen_->OnEnter([this] { boxes_.GoOn(); });
}

void Run::Start(Sink& first) {
  if (!IsPlayback()) return StartLive();
  if (!IsPaced()) return StartPlayback(engine_, options_.play);
  receiver_.Initialize();
  player_.emplace(options_.play, options_.speed, receiver_.GetCurrentBaudrate(), first);
}

std::unique_ptr<LiveScreen::Busy> Run::BeBusy() {
  if (!screen_) return nullptr;
  return std::make_unique<LiveScreen::Busy>(*screen_, "starting the receiver", screen_->StartTime());
}

void Run::StartLive() {
  if (options_.record.empty()) {
    tap_.emplace(engine_);
    if (screen_) screen_->ListenOn(*tap_);
  } else {
    recorder_.emplace(options_.record);
    recorder_->Begin(engine_);
  }
  if (!screen_) source_->Tell(options_.model);
  source_->Start();
  if (options_.reconnect) reconnect_.emplace(source_->Device(), *options_.reconnect);
  const auto busy = BeBusy();
  StartEngine(engine_, *source_, *watch_);
  if (rinex_) AskForRawData();
}

void Run::AskForRawData() {
  const double interval = options_.rinex.interval;
  if (!receiver_.EnablePostProcessing(true) || (interval > 0.0 && !SetRawInterval(receiver_, interval))) {
    throw Failure(ExitCode::refused, "the receiver did not take the command to send raw data" +
                                         (interval > 0.0 ? " every " + Seconds(interval) : std::string()));
  }
}

Deadline::Clock::time_point Run::NextDeadline() const {
  auto next = Deadline::Clock::time_point::max();
  for (const auto* deadline : {&end_, &first_message_, &last_record_}) next = deadline->Earlier(next);
  if (fix_age_ != nullptr) next = fix_age_->Due().Earlier(next);
  if (reconnect_) next = reconnect_->NextLook().Earlier(next);
  if (player_) next = std::min(next, player_->NextAt());
  if (recorder_) next = std::min(next, Deadline::Clock::now() + kRecordInterval);
  if (screen_) next = std::min(next, screen_->NextDraw());
  return next;
}

std::optional<ExitCode> Run::Ending() {
  TakeNote();
  if (window_->IsFull()) return ExitCode::done;
  if (interrupt_.HasCome()) return ExitCode::interrupted;
  if (screen_ && screen_->WantsToQuit()) return ExitCode::done;
  if (player_ && (player_->IsAtEnd() || exports_->IsOver())) {
    if (player_->IsAtEnd()) CheckUnderstood(player_->Source(), *window_);
    return ExitCode::done;
  }
  if (recorder_ && !engine_.m_bRecordRaw) {
    throw Failure(ExitCode::failed, "recording to " + options_.record + " has failed");
  }
  // Without a reconnection a run of a stated length goes on to its end, on a line that is silent now.
  if (IsLost() && !last_record_.IsSet() && (reconnect_ ? !reconnect_->IsWaiting() : !end_.IsSet())) {
    last_record_.Set(kLastRecords);
  }
  if (last_record_.HasPassed()) {
    if (!reconnect_) throw PortLost(source_->Device(), true);
    WaitForPort();
  }
  if (reconnect_ && reconnect_->IsBack()) Reopen();
  if (first_message_.HasPassed()) {
    if (!IsLost()) FailIfNothingUnderstood(options_.timeout);
    first_message_.Clear();
  }
  if (!end_.HasPassed()) return std::nullopt;
  if (IsLost()) throw PortLost(source_->Device(), !reconnect_);
  if (!IsPlayback()) FailIfNothingUnderstood(options_.duration);
  return ExitCode::done;
}

/// The first message that is understood shows that port and model belong together.
void Run::TakeNote() {
  if (noted_ || IsPlayback() || !HasUnderstood()) return;
  noted_ = true;
  if (tap_) engine_.m_bRecordRaw = false;
  if (!source_->IsSimulated()) Remember(source_->Device(), receiver_);
}

void Run::WaitForPort() {
  last_record_.Clear();
  first_message_.Clear();
  engine_.Stop();
  window_->Drain();
  reconnect_->Begin();
}

void Run::Reopen() {
  MapComPort(kPort, CString::FromUtf8(reconnect_->Name()));
  watch_.emplace(reconnect_->Name());
  receiver_.ResetSpeedEngine();
  if (recorder_) recorder_->Begin(engine_);
  try {
    const auto busy = BeBusy();
    StartEngine(engine_, *source_, *watch_);
    reconnect_->End();
    if (!noted_ && options_.timeout > 0.0) first_message_.Set(options_.timeout);
    if (rinex_) AskForRawData();
  } catch (const Failure& failure) {
    Complain(failure.what());
    if (failure.Code() == ExitCode::port_closed) reconnect_->Begin();
  } catch (const PacingClock::Interrupted&) {
    reconnect_->Begin();  // unless it was the end of the run
  }
}

bool Run::HasUnderstood() const {
  const int sentences = receiver_.GetSentencesRecognised() - receiver_.GetChecksumErrors();
  return sentences + receiver_.GetBinaryMessages() > 0 || window_->GetPublished().All() > 0;
}

bool Run::HasHeard() const {
  return tap_ ? tap_->HasHeard() : recorder_->HasHeard();
}

void Run::FailIfNothingUnderstood(double seconds) const {
  if (HasUnderstood()) return;
  throw NothingUnderstood(source_->Device(), seconds, HasHeard(), receiver_);
}

}  // namespace

ExitCode Monitor(const MonitorOptions& options, const Interrupt& interrupt, Output& output) {
  return Run(options, interrupt, output).Go();
}

}  // namespace host
