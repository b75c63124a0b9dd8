#include "host/session/session.h"

#include <algorithm>
#include <utility>

#include "gpsengine/face/models.h"
#include "gpsengine/face/port.h"
#include "gpsengine/face/tally.h"
#include "gpsengine/face/words.h"
#include "host/line/config.h"
#include "host/run/face.h"

namespace host {

Session::Session(const RunOptions& options, const Interrupt& interrupt, Output& output)
    : options_(options),
      interrupt_(interrupt),
      output_(output),
      receiver_(*engine_.FindReceiver(FindModel(options.model).GetName())),
      window_(options.count) {
  options_.model = receiver_.GetName().ToUtf8();
  window_.ReadBlocksOf(receiver_);
}

void Session::Read(std::unique_ptr<Feed> feed) {
  feed_ = std::move(feed);
  if (Sink* const records = feed_->Records()) window_.Add(*records);
  engine_.InitReceivers();
  if (options_.baud > 0) receiver_.UseBaudrate(options_.baud);
  receiver_.SetupReceiver(kPort, static_cast<int>(options_.geoid), options_.antenna_height, "",
                          feed_->MovesBytes());
  engine_.SetReceiver(&receiver_);
  if (options_.reconnect && feed_->IsLive()) reconnect_.emplace(*options_.reconnect);
}

void Session::Add(Outlet& outlet) {
  outlets_.push_back(&outlet);
  if (Sink* const records = outlet.Records()) window_.Add(*records);
}

ExitCode Session::Run(RunRules rules) {
  rules_ = std::move(rules);
  engine_.m_bAttachRawData = rules_.attach_raw.value_or(feed_->MovesBytes() || receiver_.HasRawData());
  try {
    if (const auto ending = Start()) return *ending;
    std::optional<ExitCode> ending;
    while (!ending) {
      Wait();
      Step();
      ending = Ending();
    }
    return Finish(*ending);
  } catch (...) {
    PassBytes();  // of a run that has failed, too
    throw;
  }
}

std::optional<ExitCode> Session::Start() {
  try {
    if (!Open()) return interrupt_.HasCome() ? ExitCode::interrupted : ExitCode::done;
  } catch (const Failure& failure) {
    if (!reconnect_ || failure.Code() != ExitCode::port_closed || !feed_->GetPort()->IsMissing()) throw;
    Complain(failure.what());
    reconnect_->Begin(*feed_->GetPort(), false, failure.what());
  }
  if (options_.duration > 0.0) end_.Set(options_.duration);
  return std::nullopt;
}

// False if the user has stopped it. Only a live line has waits to be stopped in; elsewhere time may be
// another than the real one.
bool Session::Open() {
  struct Starting {
    explicit Starting(Session& run) : session(run) { session.Tell(RunEvent::starting); }
    ~Starting() { session.Tell(RunEvent::started); }
    Session& session;
  };
  if (!PreparePort()) return false;
  std::optional<PacingClock::Sequence> sequence;
  if (feed_->IsLive()) sequence.emplace(interrupt_, rules_.label, rules_.time);
  const Starting starting(*this);
  KeepCapturing();
  const auto is_stopped = [&sequence] { return sequence && PacingClock::StoppedAt(); };
  feed_->Open(engine_, window_);
  if (rules_.on_open && !is_stopped()) rules_.on_open(receiver_);
  if (rules_.silence > 0.0) silence_.Set(rules_.silence);
  return !is_stopped();
}

// False if the run is over meanwhile.
bool Session::PreparePort() {
  Port* const port = feed_->GetPort();
  while (port != nullptr && !port->Prepare()) {
    Wait();
    StepOutlets();
    if (IsDone() || interrupt_.HasCome()) return false;
  }
  return true;
}

void Session::Tell(RunEvent event) {
  for (Outlet* outlet : outlets_) outlet->OnEvent(event);
}

std::string Session::PassBytes() {
  std::string bytes = feed_->TakeBytes();
  if (bytes.empty()) return bytes;
  heard_ = true;
  for (Outlet* outlet : outlets_) outlet->OnBytes(bytes);
  return bytes;
}

void Session::KeepCapturing() {
  const auto wants = [](const Outlet* outlet) { return outlet->WantsTexts(); };
  const bool wanted =
      window_.WantsSky() || feed_->WantsTexts() || std::any_of(outlets_.begin(), outlets_.end(), wants);
  engine_.m_ComBuffer.KeepCapturing(wanted);
}

// Bytes go before what was made of them, but for a playback's, which come with the texts of messages.
void Session::PassOn() {
  KeepCapturing();
  if (const std::string bytes = PassBytes(); !bytes.empty()) feed_->Decode(engine_, bytes);
  window_.Drain();
  PassBytes();
}

Deadline::Moment Session::NextAt() const {
  Deadline::Moment next = feed_->NextAt();
  next = end_.Earlier(silence_.Earlier(next));
  if (reconnect_) next = reconnect_->NextLook().Earlier(next);
  for (const Outlet* outlet : outlets_) next = std::min(next, outlet->NextAt());
  return next;
}

void Session::Wait() {
  std::vector<pollfd> waits = {
      {GetQueueDescriptor(), POLLIN, 0},
      {interrupt_.Descriptor(), POLLIN, 0},
      {feed_->Descriptor(), POLLIN, 0},
      {output_.Descriptor(), 0, 0},  // that its reader has gone is told all the same
      {feed_->GetPort() != nullptr ? feed_->GetPort()->Descriptor() : -1, POLLIN, 0}};
  std::vector<std::size_t> firsts;
  for (Outlet* outlet : outlets_) {
    firsts.push_back(waits.size());
    outlet->AddWaits(waits);
  }
  WaitFor(waits, NextAt());
  is_read_ = is_read_ && (waits[3].revents & (POLLERR | POLLHUP)) == 0;
  for (std::size_t i = 0; i < outlets_.size(); ++i) outlets_[i]->Handle(waits, firsts[i]);
}

void Session::Step() {
  feed_->Step();
  PassOn();
  StepOutlets();
}

void Session::StepOutlets() {
  for (Outlet* outlet : outlets_) outlet->Step();
  is_read_ &= output_.Flush();
}

bool Session::IsDone() const {
  const auto is_done = [](const Outlet* outlet) { return outlet->IsDone(); };
  return !is_read_ || window_.IsFull() || std::any_of(outlets_.begin(), outlets_.end(), is_done);
}

std::optional<ExitCode> Session::Ending() {
  NoteUnderstood();
  if (IsDone()) return ExitCode::done;
  if (interrupt_.HasCome()) return ExitCode::interrupted;
  if (feed_->IsAtEnd()) return ExitCode::done;
  FollowLine();
  CheckSilence();
  if (IsDone()) return ExitCode::done;  // with the last of a line that has gone
  if (!end_.HasPassed()) return std::nullopt;
  Judge();
  return ExitCode::done;
}

ExitCode Session::Finish(ExitCode ending) {
  boxes_.Release();
  Tell(RunEvent::over);
  engine_.Stop();
  PassOn();
  window_.EndSky();
  output_.Flush();
  bool finished = true;
  for (auto outlet = outlets_.rbegin(); outlet != outlets_.rend(); ++outlet) finished &= (*outlet)->Finish();
  output_.Flush();
  NoteUnderstood();  // the outlets may have decoded the last of it
  return finished || ending != ExitCode::done ? ending : ExitCode::failed;
}

long long Session::Understood() const {
  return TallyOf(engine_).Good() + window_.GetPublished().All();
}

/// The first message that is understood shows that port and model belong together.
void Session::NoteUnderstood() {
  if (understood_ || IsWaiting() || Understood() <= understood_before_) return;
  understood_ = true;
  silence_.Clear();
  if (feed_->GetKind() == Feed::Kind::device) {
    const bool is_input = feed_->GetPort()->IsInput();
    rules_.follows && !is_input ? Remember(feed_->Name(), receiver_) : KeepRate(receiver_);
  }
  Tell(RunEvent::understood);
}

void Session::FollowLine() {
  const bool holds_out = rules_.is_strict && !reconnect_ && end_.IsSet();
  if (feed_->IsLost() && !IsWaiting() && !holds_out) WaitForPort();
  if (reconnect_ && reconnect_->IsBack()) Reopen();
}

void Session::WaitForPort() {
  engine_.Stop();  // what the reader has in hand still reaches the outlets
  PassOn();
  window_.EndSky();
  StepOutlets();
  if (IsDone()) return;
  if (!reconnect_) throw PortLost();
  silence_.Clear();
  understood_before_ = Understood();
  understood_ = false;
  reconnect_->Begin(*feed_->GetPort(), true);
  Tell(RunEvent::lost);
}

// A receiver that refuses what it is asked for is listened to all the same.
void Session::Reopen() {
  receiver_.ResetSpeedEngine();
  try {
    if (!Open()) engine_.Stop();  // to be tried again, unless that was the end of the run
  } catch (const gps::Error& failure) {
    Complain(failure.what());
  }
  if (!engine_.IsActive()) return reconnect_->Begin(*feed_->GetPort(), true);
  reconnect_->End();
  Tell(RunEvent::back);
}

void Session::CheckSilence() {
  if (!silence_.HasPassed()) return;
  silence_.Clear();
  if (IsLost() || (rules_.is_strict && Understood() > 0)) return;
  if (rules_.is_strict) throw NothingUnderstood(rules_.silence);
  Complain(NothingUnderstood(rules_.silence).what());
}

void Session::Judge() const {
  if (rules_.is_strict && IsLost()) throw PortLost();
  if (Understood() == 0) throw NothingUnderstood(options_.duration);
}

Failure Session::NothingUnderstood(double seconds) const {
  const auto fail = [](const std::string& text) { return Failure(ExitCode::nothing_understood, text); };
  const std::string& name = feed_->Name();
  if (!feed_->IsLive()) return fail("no message of " + name + " was understood so far");
  const std::string in_time = " came from " + name + " in " + Seconds(seconds);
  const std::string bytes = "bytes" + in_time + ", but no message was understood";
  if (!feed_->GetPort()->HasRate()) {
    return fail(heard_ ? bytes + ": is the model right, and the baud rate where the line is?"
                       : "no data" + in_time + ": check that the receiver is on, and what sends its data");
  }
  if (!heard_) return fail("no data" + in_time + ": check that the receiver is on, and its cable");
  const char* const kept = IsKeptRate(receiver_)
                               ? ", the rate that is remembered for this model (\"gpsengine config forget\" "
                                 "forgets it)"
                               : "";
  return fail(bytes + " at " + std::to_string(receiver_.GetCurrentBaudrate()) + " baud" + kept +
              ": set the receiver's baud rate with --baud, let --baud auto find it, or let the receiver send "
              "NMEA");
}

Failure Session::PortLost() const {
  const Port& port = *feed_->GetPort();
  if (reconnect_ && !reconnect_->WasThere()) return Failure(ExitCode::port_closed, port.WhyNot());
  const char* const why = port.GetAddress() ? "the other side hung up, or is out of reach. Start once more"
                                            : "it was unplugged, or the other side hung up. Plug it in again "
                                              "and start once more";
  return Failure(ExitCode::port_lost,
                 "the port " + feed_->Name() + " was lost: " + why +
                     (rules_.follows && !reconnect_ ? ", or let --reconnect wait for it" : ""));
}

std::string Seconds(double seconds) {
  return Print("%g s", seconds);
}

}  // namespace host
