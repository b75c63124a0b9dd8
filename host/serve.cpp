#include "host/serve.h"

#include <poll.h>

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/serial.h"
#include "host/commands/models.h"
#include "host/line/config.h"
#include "host/line/linetap.h"
#include "host/line/reconnect.h"
#include "host/line/source.h"
#include "host/records/gpsdsink.h"
#include "host/records/hostwindow.h"
#include "host/records/lastposition.h"
#include "host/run/boxes.h"
#include "host/run/portwatch.h"
#include "host/run/waiter.h"
#include "host/server/gpsdserver.h"
#include "host/server/pagehub.h"
#include "host/server/pageserver.h"

namespace host {

namespace {

constexpr std::chrono::seconds kStatusInterval{1};
/// A receiver that has not been understood for so long from the start is worth a word.
constexpr double kFirstMessageTime = 10.0;
/// What the reader has in hand when its port goes away still reaches the clients within this time.
constexpr std::chrono::milliseconds kLastRecords{400};

std::string Now() {
  std::string iso;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  AppendIso(iso, std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
  return iso;
}

/// Makes JSON lines of what the library publishes, and keeps the texts of messages.
class ServeSink : public GpsdSink {
 public:
  using GpsdSink::GpsdSink;
  bool OnData(const CGPSData& data) override {
    last_position_.Note(data);
    return GpsdSink::OnData(data);
  }
  LastPosition& Position() { return last_position_; }
  const LastPosition& Position() const { return last_position_; }
  bool OnString(const CString& text) override {
    for (int i = 0; i < text.GetLength(); ++i) bytes_ += static_cast<char>(text.GetAt(i));
    bytes_ += "\r\n";
    return false;
  }
  std::string TakeBytes() { return std::exchange(bytes_, {}); }

 private:
  LastPosition last_position_;
  std::string bytes_;
};

class ServeRun {
 public:
  ServeRun(const ServeOptions& options, const Interrupt& interrupt, Output& output);
  ~ServeRun();

  ExitCode Go();

 private:
  bool IsPlayback() const { return !options_.play.empty(); }
  const std::string& Device() const { return IsPlayback() ? options_.play : source_->Device(); }
  void Listen();
  void Start();
  void Wait();
  void PassOn();
  void PassBytes(const std::string& bytes);
  void PassLines();
  void CheckReceiver();
  long long Understood() const;
  Failure UnderstoodNothing(double seconds) const;
  bool IsWaitingForPort() const { return reconnect_ && reconnect_->IsWaiting(); }
  void WaitForPort();
  void Reopen();
  void TellStatus();
  std::string Status() const;
  std::optional<ExitCode> Ending();

  const ServeOptions& options_;
  const Interrupt& interrupt_;
  Output& output_;
  // What other threads meet outlives them.
  PageHub hub_;
  Boxes boxes_;
  std::optional<Source> source_;
  CGPSEngine engine_;
  CGPSReceiver& receiver_;
  std::string json_;
  std::optional<ServeSink> sink_;
  std::optional<HostWindow> window_;
  std::optional<PortWatch> watch_;
  std::optional<LineTap> tap_;
  std::optional<Reconnect> reconnect_;
  std::optional<GpsdServer> server_;
  std::unique_ptr<PageServer> page_;
  SentenceFinder sentences_;
  GpsdDevice device_;
  bool heard_ = false;
  long long understood_before_ = 0;  // the port was opened again
  const std::string started_ = Now();
  Deadline end_, first_message_, last_record_, status_;
};

ServeRun::ServeRun(const ServeOptions& options, const Interrupt& interrupt, Output& output)
    : options_(options),
      interrupt_(interrupt),
      output_(output),
      receiver_(SelectModel(engine_, options.model)) {}

ServeRun::~ServeRun() {
  boxes_.Release();
  hub_.Close();
}

ExitCode ServeRun::Go() {
  SelectReceiver(engine_, receiver_, options_.baud, options_.geoid, options_.antenna_height);
  engine_.m_bAttachRawData = receiver_.HasRawData();
  if (!IsPlayback()) source_.emplace(options_.port, receiver_);
  sink_.emplace(json_, Device(), options_.geoid);
  window_.emplace(*sink_);
  watch_.emplace(source_ && !source_->IsSimulated() ? source_->Device() : "");
  Listen();
  Start();
  if (options_.duration > 0.0) end_.Set(options_.duration);
  first_message_.Set(kFirstMessageTime);
  std::optional<ExitCode> ending;
  while (!ending) {
    CheckReceiver();
    TellStatus();
    Wait();
    PassOn();
    ending = Ending();
  }
  boxes_.Release();
  engine_.m_bRecordRaw = false;
  engine_.Stop();
  return *ending;
}

void ServeRun::Listen() {
  const std::string address = options_.listen == "localhost" ? "127.0.0.1" : options_.listen;
  if (!IsLoopback(address)) {
    Complain("listening on " + address + ": whoever reaches this machine can read the position");
  }
  server_.emplace(address, options_.tcp);
  output_.Text() += "gpsd protocol: " + AddressAndPort(address, server_->Port()) + "\n";
  if (options_.http) {
    page_ = StartPageServer(hub_, address, *options_.http);
    output_.Text() += "page: http://" + AddressAndPort(address, page_->Port()) + "/\n";
  }
  output_.Flush();
}

void ServeRun::Start() {
  device_ = {Device(), options_.model, 0, ""};
  server_->SetDevice(device_);
  if (IsPlayback()) {
    engine_.m_ComBuffer.m_bPaused = false;
    return StartPlayback(engine_, options_.play);
  }
  tap_.emplace(engine_);
  source_->Tell(options_.model);
  source_->Start();
  if (options_.reconnect) reconnect_.emplace(Device(), *options_.reconnect);
  StartEngine(engine_, *source_, *watch_);
  device_.bps = receiver_.GetCurrentBaudrate();
  server_->SetDevice(device_);
}

void ServeRun::Wait() {
  auto until = server_->Earlier(Deadline::Clock::time_point::max());
  for (const auto* deadline : {&end_, &first_message_, &last_record_, &status_}) {
    until = deadline->Earlier(until);
  }
  if (reconnect_) until = reconnect_->NextLook().Earlier(until);
  enum { kQueue, kSignal, kWatch, kTap, kServer };
  std::vector<pollfd> waits = {{GetQueueDescriptor(), POLLIN, 0},
                               {interrupt_.Descriptor(), POLLIN, 0},
                               {watch_->Descriptor(), 0, 0},
                               {tap_ ? tap_->Descriptor() : -1, POLLIN, 0}};
  server_->AddWaits(waits);
  const bool found = poll(waits.data(), waits.size(), MillisecondsUntil(until)) > 0;
  if (watch_->NeedsLooking()) watch_->Look();
  if (!found) {
    for (auto& wait : waits) wait.revents = 0;
  }
  watch_->OnEvents(waits[kWatch].revents);
  server_->Handle(waits, kServer);
}

// Bytes go ahead of what was made of them.
void ServeRun::PassOn() {
  if (tap_) {
    std::string bytes;
    tap_->Take(bytes);
    if (!bytes.empty()) server_->PublishBytes(bytes);
    PassBytes(bytes);
  }
  window_->Drain();
  if (IsPlayback()) {
    PassBytes(sink_->TakeBytes());
    // The capture stops itself when it has grown too long.
    if (engine_.m_ComBuffer.m_bOverflow) {
      engine_.m_ComBuffer.m_strData = "";
      engine_.m_ComBuffer.m_bOverflow = false;
      engine_.m_ComBuffer.m_bPaused = false;
    }
  }
  PassLines();
}

void ServeRun::PassBytes(const std::string& bytes) {
  heard_ = heard_ || !bytes.empty();
  sentences_.Feed(bytes, [this](std::string_view sentence) {
    server_->PublishSentence(sentence);
    if (IsPlayback()) server_->PublishBytes(sentence);
  });
}

void ServeRun::PassLines() {
  std::string_view rest = json_;
  while (!rest.empty()) {
    const auto line = rest.substr(0, rest.find('\n') + 1);
    rest.remove_prefix(line.size());
    server_->PublishJson(line);
    const bool is_shown = !line.starts_with(R"({"class":"RAW")") && !line.starts_with(R"({"class":"EPHE)");
    if (page_ && is_shown) hub_.Publish(line.substr(0, line.size() - 1));
  }
  json_.clear();
}

long long ServeRun::Understood() const {
  return receiver_.GetSentencesRecognised() - receiver_.GetChecksumErrors() + receiver_.GetBinaryMessages() +
         window_->GetPublished().All();
}

void ServeRun::CheckReceiver() {
  if (Understood() > understood_before_ && device_.activated.empty() && !IsWaitingForPort()) {
    device_.activated = Now();
    server_->SetDevice(device_);
    first_message_.Clear();
    if (source_ && !source_->IsSimulated()) Remember(Device(), receiver_);
  }
  if (!first_message_.HasPassed()) return;
  first_message_.Clear();
  Complain(UnderstoodNothing(kFirstMessageTime).what());
}

Failure ServeRun::UnderstoodNothing(double seconds) const {
  if (!IsPlayback()) return NothingUnderstood(Device(), seconds, heard_, receiver_);
  return Failure(ExitCode::nothing_understood, "no message of " + options_.play + " was understood so far");
}

void ServeRun::TellStatus() {
  const bool has_news = sink_->Position().TakeNews();
  if (!page_ || (status_.IsSet() && !status_.HasPassed() && !has_news)) return;
  status_.Set(kStatusInterval);
  hub_.SetStatus(Status());
}

std::string ServeRun::Status() const {
  const GpsdCounts counts = server_->Counts();
  const PageHub::Counts pages = hub_.GetCounts();
  std::string line;
  JsonWriter json(line);
  json.BeginObject();
  json.Member("class", "SERVER");
  json.Member("version", GPSENGINE_VERSION);
  json.Member("started", std::string_view(started_));
  json.Member("time", std::string_view(Now()));
  json.Known("device", Device());
  json.Member("model", std::string_view(options_.model));
  json.Member("source", IsPlayback() ? "recording" : source_->IsSimulated() ? "simulated" : "port");
  if (device_.bps > 0) json.Member("baud", device_.bps);
  json.Member("lost", IsWaitingForPort());
  json.Member("understood", !device_.activated.empty());
  sink_->Position().Write(json);
  json.Member("messages", engine_.GetMessages());
  json.Member("checksumErrors", receiver_.GetChecksumErrors());
  json.Member("binaryMessages", receiver_.GetBinaryMessages());
  json.Member("records", window_->GetPublished().All());
  json.Member("lostRecords", GetLostMessages());
  json.Member("clients", server_->Clients());
  json.Member("accepted", counts.accepted);
  json.Member("refused", counts.refused);
  json.Member("stalled", counts.stalled);
  json.Member("dropped", counts.dropped);
  json.Member("requestErrors", counts.errors);
  json.Member("pages", pages.readers);
  json.Member("pageDropped", pages.dropped);
  json.EndObject();
  return line;
}

std::optional<ExitCode> ServeRun::Ending() {
  if (interrupt_.HasCome()) return ExitCode::interrupted;
  if (end_.HasPassed()) {
    if (Understood() == 0) throw UnderstoodNothing(options_.duration);
    return ExitCode::done;
  }
  if (watch_->IsLost() && !last_record_.IsSet() && !IsWaitingForPort()) last_record_.Set(kLastRecords);
  if (last_record_.HasPassed()) WaitForPort();
  if (reconnect_ && reconnect_->IsBack()) Reopen();
  return std::nullopt;
}

// Clients stay meanwhile.
void ServeRun::WaitForPort() {
  if (!reconnect_) throw PortLost(Device(), true);
  last_record_.Clear();
  first_message_.Clear();
  engine_.Stop();
  PassOn();
  understood_before_ = Understood();
  device_.activated.clear();
  server_->SetDevice(device_);
  reconnect_->Begin();
}

void ServeRun::Reopen() {
  MapComPort(kPort, CString::FromUtf8(reconnect_->Name()));
  watch_.emplace(reconnect_->Name());
  receiver_.ResetSpeedEngine();
  try {
    StartEngine(engine_, *source_, *watch_);
    reconnect_->End();
    first_message_.Set(kFirstMessageTime);
  } catch (const Failure& failure) {
    Complain(failure.what());
    reconnect_->Begin();
  }
}

}  // namespace

ExitCode Serve(const ServeOptions& options, const Interrupt& interrupt, Output& output) {
  return ServeRun(options, interrupt, output).Go();
}

}  // namespace host
