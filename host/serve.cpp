#include "host/serve.h"

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "gpsengine/face/tally.h"
#include "gpsengine/sentences/sentencefinder.h"
#include "host/corrected.h"
#include "host/records/gpsdsink.h"
#include "host/records/lastposition.h"
#include "host/run/face.h"
#include "host/run/lines.h"
#include "host/run/url.h"
#include "host/server/gpsdserver.h"
#include "host/server/mqttoutlet.h"
#include "host/server/pagehub.h"
#include "host/server/pageserver.h"

namespace host {

namespace {

constexpr std::chrono::seconds kStatusInterval{1};
// The last sentences are kept for pages, and only a few pages may read them.
constexpr std::size_t kSentenceHistory = 4096;
constexpr int kSentenceReaders = 6;
/// A receiver that has not been understood for so long from the start is worth a word.
constexpr double kFirstMessageTime = 10.0;

/// Makes JSON lines of what the library publishes, and keeps how old the position is.
class ServiceSink : public GpsdSink {
 public:
  using GpsdSink::GpsdSink;
  bool OnData(const Record& record) override {
    position.Note(record);
    return GpsdSink::OnData(record);
  }

  LastPosition position;
};

/// The outlet to gpsd's clients and to pages.
class Service : public Outlet {
 public:
  /// Listens. A line on the output names each port.
  Service(Session& session, const ServeOptions& options, Output& output);
  ~Service() override {
    hub_.Close();
    sentence_hub_.Close();
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  Sink* Records() override { return &sink_; }
  void OnBytes(std::string_view bytes) override;
  void OnEvent(RunEvent event) override;
  Deadline::Moment NextAt() const override { return status_.Earlier(server_->Earlier(Deadline::kNever)); }
  void AddWaits(std::vector<pollfd>& waits) override { server_->AddWaits(waits); }
  void Handle(const std::vector<pollfd>& waits, std::size_t first) override { server_->Handle(waits, first); }
  void Step() override;
  /// They are told of with the state of the server.
  void Watch(const Corrected& corrected) { corrected_ = &corrected; }

 private:
  void PassLines();
  std::string Status() const;

  Session& session_;
  const std::string started_ = IsoText(Now());
  std::string json_;
  ServiceSink sink_;
  SentenceFinder sentences_;
  const Corrected* corrected_ = nullptr;
  GpsdDevice device_;
  std::optional<GpsdServer> server_;
  Deadline status_;
  PageHub hub_;  // both outlive the page's threads
  PageHub sentence_hub_{kSentenceHistory, kSentenceReaders};
  std::unique_ptr<PageServer> page_;
};

Service::Service(Session& session, const ServeOptions& options, Output& output)
    : session_(session),
      sink_(json_, session.GetFeed().Name(), options.geoid),
      device_{session.GetFeed().Name(), options.model, 0, ""} {
  const std::string address = options.listen == "localhost" ? "127.0.0.1" : options.listen;
  if (!IsLoopback(address)) {
    Complain("listening on " + address + ": whoever reaches this machine can read the position");
  }
  server_.emplace(address, options.tcp);
  server_->SetDevice(device_);
  output.Text() += "gpsd protocol: " + HostAndPort(address, server_->Port()) + "\n";
  if (options.http) {
    page_ = StartPageServer(hub_, sentence_hub_, address, *options.http);
    hub_.SetStatus(Status());
    output.Text() += "page: http://" + HostAndPort(address, page_->Port()) + "/\n";
  }
  output.Flush();
}

void Service::OnEvent(RunEvent event) {
  const Port* const port = session_.GetFeed().GetPort();
  if (event == RunEvent::started && port != nullptr && port->HasRate()) {
    device_.bps = session_.Receiver().GetCurrentBaudrate();
  }
  if (event == RunEvent::understood) device_.activated = IsoText(Now());
  if (event == RunEvent::lost) device_.activated.clear();
  server_->SetDevice(device_);
}

void Service::OnBytes(std::string_view bytes) {
  server_->PublishBytes(bytes);
  sentences_.Feed(bytes, [this](std::string_view text) {
    if (page_) sentence_hub_.Publish(text.substr(0, text.size() - 2));
    if (!IsParameterLine(text)) server_->PublishSentence(text);
  });
}

void Service::Step() {
  PassLines();
  const bool has_news = sink_.position.TakeNews();
  if (!page_ || (status_.IsSet() && !status_.HasPassed() && !has_news)) return;
  status_.Set(kStatusInterval);
  hub_.SetStatus(Status());
}

void Service::PassLines() {
  TakeLines(json_, [this](std::string_view line) {
    server_->PublishJson(line);
    const bool is_shown = !line.starts_with(R"({"class":"RAW")") && !line.starts_with(R"({"class":"EPHE)");
    if (page_ && is_shown) hub_.Publish(line.substr(0, line.size() - 1));
  });
}

std::string Service::Status() const {
  const Tally tally = TallyOf(session_.Engine());
  const GpsdCounts counts = server_->Counts();
  const PageHub::Counts pages = hub_.GetCounts();
  std::string line;
  JsonWriter json(line);
  json.BeginObject();
  json.Member("class", "SERVER");
  json.Member("version", GPSENGINE_VERSION);
  json.Member("started", std::string_view(started_));
  json.Member("time", std::string_view(IsoText(Now())));
  json.Known("device", device_.path);
  json.Member("model", std::string_view(device_.driver));
  json.Member("source", session_.GetFeed().KindName());
  if (device_.bps > 0) json.Member("baud", device_.bps);
  json.Member("lost", session_.IsWaiting());
  json.Member("understood", !device_.activated.empty());
  sink_.position.Write(json);
  json.Member("messages", tally.messages);
  json.Member("checksumErrors", tally.checksum_errors);
  json.Member("binaryMessages", tally.binary);
  json.Member("records", session_.Window().GetPublished().All());
  json.Member("lostRecords", GetLostMessages());
  json.Member("clients", server_->Clients());
  json.Member("accepted", counts.accepted);
  json.Member("refused", counts.refused);
  json.Member("stalled", counts.stalled);
  json.Member("dropped", counts.dropped);
  json.Member("requestErrors", counts.errors);
  json.Member("pages", pages.readers);
  json.Member("pageDropped", pages.dropped);
  if (corrected_ != nullptr) {
    json.Key("corrections");
    json.BeginObject();
    WriteCorrections(json, corrected_->Status());
    json.EndObject();
  }
  json.EndObject();
  return line;
}

}  // namespace

ExitCode Serve(const ServeOptions& given, const Interrupt& interrupt, Output& output) {
  const ServeOptions options = ByItsOwnTime(given);
  if (options.explain) return ExplainRawData(options, output);
  Session session(options, interrupt, output);
  session.Read(MakeLiveFeed(options, session.Options().model, /*tells_bytes=*/true));
  const Feed& feed = session.GetFeed();
  LiveRawData raw_data(session, options);
  Service service(session, options, output);
  session.Add(service);
  std::optional<MqttOutlet> mqtt;
  if (!options.mqtt.broker.host.empty()) session.Add(mqtt.emplace(session, options.mqtt));
  std::optional<Corrected> corrected;
  if (!options.corrections.source.empty()) {
    session.Add(corrected.emplace(session, options.corrections, output, Format::none));
    service.Watch(*corrected);
  }
  const Shown beside(session, options, output);
  feed.Announce(options.model);
  RunRules rules;
  rules.silence = kFirstMessageTime;
  rules.follows = true;
  raw_data.Rule(rules);
  const ExitCode code = session.Run(std::move(rules));
  if (code == ExitCode::done) feed.CheckUnderstood(session.Window());
  return code;
}

}  // namespace host
