#include "host/server/mqttoutlet.h"

#include <string_view>

#include "host/run/lines.h"

namespace host {

namespace {

constexpr char kOffline[] = R"({"class":"RECEIVER","state":"offline"})";

/// With an id; warns of what everyone may read.
MqttOptions Checked(MqttOptions options, const std::string& model) {
  if (options.id.empty()) options.id = DefaultMqttId(model);
  const std::string& host = options.broker.host;
  if (!options.broker.tls && host != "localhost" && host != "127.0.0.1" && host != "::1") {
    Complain("mqtt:// is not encrypted: whoever is on the way to " + host +
             " can read the position and the password; mqtts:// encrypts them");
  }
  return options;
}

}  // namespace

MqttOutlet::MqttOutlet(Session& session, const MqttOptions& options, const MqttLimits& limits)
    : GpsdSink(json_, session.GetFeed().Name(), session.Options().geoid),
      session_(session),
      link_(Checked(options, session.Options().model), kOffline, limits) {}

bool MqttOutlet::OnData(const Record& record) {
  position_.Note(record);
  understood_ = true;  // of which the session tells a little later
  GpsdSink::OnData(record);
  return false;
}

bool MqttOutlet::OnSky(const Sky& sky) {
  GpsdSink::OnSky(sky);
  return false;
}

void MqttOutlet::OnEvent(RunEvent event) {
  if (event == RunEvent::understood) understood_ = true;
  if (event == RunEvent::lost) understood_ = false;
}

const char* MqttOutlet::State() const {
  return session_.IsWaiting() ? "lost" : understood_ ? "receiving" : "silent";
}

void MqttOutlet::Step() {
  PassLines();
  const bool has_news = position_.TakeNews();
  if (std::string_view(state_) == State() && !has_news) return;
  state_ = State();
  const Feed& feed = session_.GetFeed();
  std::string line;
  JsonWriter json(line);
  json.BeginObject();
  json.Member("class", "RECEIVER");
  json.Member("state", state_);
  json.Member("time", std::string_view(IsoText(Now())));
  json.Known("device", feed.Name());
  json.Member("model", std::string_view(session_.Options().model));
  json.Member("source", feed.KindName());
  if (feed.IsLive()) json.Member("baud", session_.Receiver().GetCurrentBaudrate());
  json.Known("fix", position_.Kind());
  json.EndObject();
  link_.Queue().SetState(line);
}

void MqttOutlet::PassLines() {
  constexpr std::pair<std::string_view, std::string_view> kLeaves[] = {{R"({"class":"TPV")", "fix"},
                                                                       {R"({"class":"SKY")", "sky"}};
  TakeLines(json_, [this, &kLeaves](std::string_view line) {
    for (const auto& [head, leaf] : kLeaves) {
      if (line.starts_with(head)) link_.Queue().Put(leaf, line.substr(0, line.size() - 1));
    }
  });
}

// What came with the end of the run.
bool MqttOutlet::Finish() {
  PassLines();
  return true;
}

}  // namespace host
