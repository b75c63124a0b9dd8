#include "host/server/gpsdserver.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "gpsengine/sentences/moment.h"
#include "host/records/jsonwriter.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

constexpr std::chrono::seconds kAcceptPause{1};
// How much of a request an error repeats.
constexpr std::size_t kShownRequest = 40;

/// A line with an object of that class, whose other members `write` writes.
template <class Write>
std::string Object(std::string_view name, Write&& write) {
  std::string line;
  JsonWriter json(line);
  json.BeginObject();
  json.Member("class", name);
  write(json);
  json.EndObject();
  return line + "\r\n";
}

std::string Error(std::string_view text) {
  return Object("ERROR", [&](JsonWriter& json) { json.Member("message", text); });
}

void WriteDevice(JsonWriter& json, const GpsdDevice& device) {
  json.Known("path", device.path);
  if (!device.activated.empty()) {
    constexpr int kSeenGps = 1;
    json.Member("activated", std::string_view(device.activated));
    json.Member("flags", kSeenGps);
  }
  json.Member("driver", std::string_view(device.driver));
  if (device.bps > 0) {
    json.Member("native", 0);
    json.Member("bps", device.bps);
    json.Member("parity", "N");
    json.Member("stopbits", 1);
  }
}

std::string Describe(const GpsdWatch& watch) {
  return Object("WATCH", [&](JsonWriter& json) {
    json.Member("enable", watch.enable);
    json.Member("json", watch.json);
    json.Member("nmea", watch.nmea);
    json.Member("raw", watch.raw);
    for (const auto* key : {"scaled", "timing", "split24", "pps"}) json.Member(key, false);
    json.Known("device", watch.device);
  });
}

/// An array of that object, or an empty one if there is none.
void WriteList(JsonWriter& json, std::string_view key, std::string_view object) {
  json.Key(key);
  json.BeginArray();
  if (!object.empty()) json.Verbatim(object);
  json.EndArray();
}

GpsdPiece Piece(std::string text) {
  return std::make_shared<const std::string>(std::move(text));
}

}  // namespace

GpsdServer::GpsdServer(const std::string& address, int port, const GpsdLimits& limits)
    : limits_(limits), listener_(address, port, "--tcp") {}

void GpsdServer::SetDevice(GpsdDevice device) {
  const bool has_changed = device.activated != device_.activated;
  device_ = std::move(device);
  if (!has_changed) return;
  PublishJson(Object("DEVICE", [this](JsonWriter& json) {
    WriteDevice(json, device_);
    if (device_.activated.empty()) json.Member("activated", 0);
  }));
}

void GpsdServer::PublishJson(std::string_view line) {
  const auto object = line.substr(0, line.find('\n'));
  if (object.starts_with(R"({"class":"TPV")")) position_ = object;
  if (object.starts_with(R"({"class":"SKY")")) satellites_ = object;
  Publish(line, [](const GpsdWatch& watch) { return watch.json; });
}

void GpsdServer::PublishSentence(std::string_view sentence) {
  Publish(sentence, [](const GpsdWatch& watch) { return (watch.nmea && watch.raw != 2) || watch.raw == 1; });
}

void GpsdServer::PublishBytes(std::string_view bytes) {
  Publish(bytes, [](const GpsdWatch& watch) { return watch.raw == 2; });
}

void GpsdServer::Publish(std::string_view text, bool (*wants)(const GpsdWatch&)) {
  GpsdPiece piece;
  for (const auto& client : clients_) {
    if (!client->watch.enable || !wants(client->watch)) continue;
    if (!piece) piece = Piece(std::string(text));
    const bool was_quick = client->Dropped() == 0;
    client->Send(piece);
    if (was_quick && client->Dropped() > 0) {
      Complain("the client " + client->Peer() + " reads too slowly: its oldest lines are dropped");
    }
  }
}

void GpsdServer::AddWaits(std::vector<pollfd>& waits) {
  for (const auto& client : clients_) client->Flush();
  RemoveGone();
  // A negative descriptor is passed over.
  waits.push_back(
      {accept_again_.IsSet() && !accept_again_.HasPassed() ? -1 : listener_.Descriptor(), POLLIN, 0});
  for (const auto& client : clients_) {
    const auto events = static_cast<short>(client->IsWaiting() ? POLLIN | POLLOUT : POLLIN);
    waits.push_back({client->Descriptor(), events, 0});
  }
}

Deadline::Clock::time_point GpsdServer::Earlier(Deadline::Clock::time_point other) const {
  if (!accept_again_.HasPassed()) other = accept_again_.Earlier(other);
  for (const auto& client : clients_) other = client->Earlier(other);
  return other;
}

void GpsdServer::Handle(const std::vector<pollfd>& waits, std::size_t first) {
  for (std::size_t i = 0; i < clients_.size(); ++i) {
    GpsdClient& client = *clients_[i];
    const auto take = [&](const GpsdRequest& request) { client.Send(Piece(Answer(client, request))); };
    if ((waits[first + 1 + i].revents & ~POLLOUT) != 0) client.Read(take);
    client.TakeUnended(take);
    client.Flush();
  }
  if (waits[first].revents != 0) Accept();
  RemoveGone();
}

void GpsdServer::Accept() {
  std::string peer;
  UniqueDescriptor socket = listener_.Accept(peer);
  if (!socket) {
    // A connection that waits and cannot be taken would wake the loop for ever.
    if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
      accept_again_.Set(kAcceptPause);
    }
    return;
  }
  accept_again_.Clear();
  if (clients_.size() >= limits_.clients) {
    ++counts_.refused;
    const std::string line = Error("too many clients");
    [[maybe_unused]] const auto sent = send(socket.Get(), line.data(), line.size(), MSG_NOSIGNAL);
    return;
  }
  ++counts_.accepted;
  auto client = std::make_unique<GpsdClient>(std::move(socket), std::move(peer), limits_.request,
                                             limits_.queue, limits_.stall);
  client->Send(Piece(AnswerVersion(*client, {})));
  clients_.push_back(std::move(client));
}

void GpsdServer::RemoveGone() {
  std::erase_if(clients_, [this](const auto& client) {
    const bool stalled = client->IsStalled();
    if (!client->IsGone() && !stalled) return false;
    if (stalled) ++counts_.stalled;
    if (client->Dropped() > 0) {
      counts_.dropped += client->Dropped();
      Complain("the client " + client->Peer() + " is gone; " + std::to_string(client->Dropped()) +
               " lines were dropped for it");
    }
    return true;
  });
}

GpsdCounts GpsdServer::Counts() const {
  GpsdCounts counts = counts_;
  for (const auto& client : clients_) counts.dropped += client->Dropped();
  return counts;
}

// Gives whole lines.
std::string GpsdServer::Answer(GpsdClient& client, const GpsdRequest& request) {
  constexpr struct {
    std::string_view name;
    std::string (GpsdServer::*answer)(GpsdClient&, Argument);
  } kRequests[] = {{"?WATCH", &GpsdServer::AnswerWatch},
                   {"?DEVICE", &GpsdServer::AnswerDevice},
                   {"?DEVICES", &GpsdServer::AnswerDevices},
                   {"?VERSION", &GpsdServer::AnswerVersion},
                   {"?POLL", &GpsdServer::AnswerPoll}};
  const std::string_view text = request.text;
  if (!request.is_whole) {
    return Refuse("the request is longer than " + std::to_string(limits_.request) + " bytes");
  }
  const auto equals = text.find('=');
  const auto name = text.substr(0, equals);
  const auto argument = equals == std::string_view::npos ? Argument() : text.substr(equals + 1);
  for (const auto& known : kRequests) {
    if (known.name == name) return (this->*known.answer)(client, argument);
  }
  return Refuse("unrecognized request \"" + std::string(text.substr(0, kShownRequest)) + "\"");
}

std::string GpsdServer::Refuse(const std::string& text) {
  ++counts_.errors;
  return Error(text);
}

std::string GpsdServer::AnswerWatch(GpsdClient& client, Argument argument) {
  if (!argument) return Describe(client.watch);
  GpsdWatch watch = client.watch;
  if (!ApplyWatch(*argument, watch)) return Refuse("the argument of WATCH is malformed");
  if (!watch.device.empty() && watch.device != device_.path) return Refuse("no such device");
  client.watch = watch;
  return AnswerDevices(client, {}) + Describe(watch);
}

std::string GpsdServer::AnswerDevice(GpsdClient&, Argument argument) {
  if (argument) return Refuse("this server is read-only: no setting reaches the receiver");
  return Object("DEVICE", [this](JsonWriter& json) { WriteDevice(json, device_); });
}

std::string GpsdServer::AnswerDevices(GpsdClient&, Argument) {
  return Object("DEVICES", [this](JsonWriter& json) {
    json.Key("devices");
    json.BeginArray();
    json.BeginObject();
    json.Member("class", "DEVICE");
    WriteDevice(json, device_);
    json.EndObject();
    json.EndArray();
  });
}

std::string GpsdServer::AnswerVersion(GpsdClient&, Argument) {
  return Object("VERSION", [](JsonWriter& json) {
    json.Member("release", GPSENGINE_VERSION);
    json.Member("rev", "gpsengine " GPSENGINE_VERSION);
    // Of the protocol, as the clients of gpsd 3.22 speak it.
    json.Member("proto_major", 3);
    json.Member("proto_minor", 14);
  });
}

std::string GpsdServer::AnswerPoll(GpsdClient& client, Argument) {
  return Object("POLL", [&](JsonWriter& json) {
    json.Member("time", std::string_view(IsoText(Now())));
    json.Member("active", device_.activated.empty() ? 0 : 1);
    json.Member("dropped", client.Dropped());
    WriteList(json, "tpv", position_);
    WriteList(json, "gst", {});
    WriteList(json, "sky", satellites_);
  });
}

}  // namespace host
