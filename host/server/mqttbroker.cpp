#include "host/server/mqttbroker.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <climits>

#include "gpsengine/platform/cstring.h"
#include "host/run/failure.h"
#include "host/run/url.h"

namespace host {

namespace {

constexpr char kPasswordVariable[] = "GPSENGINE_MQTT_PASSWORD";
constexpr std::size_t kLongestName = 200;  // of a prefix, and of an id

Failure NoUrl(const std::string& why) {
  return Failure(ExitCode::usage, "--mqtt " + why + "; it takes mqtts://HOST:PORT/PREFIX or mqtt://...");
}

/// Why that cannot be a part of a topic; empty if it can.
std::string WhyNoTopic(const std::string& text) {
  const auto is_control = [](unsigned char c) { return c < ' ' || c == 0x7F; };
  if (text.empty()) return "is empty";
  if (text.size() > kLongestName) return "is longer than " + std::to_string(kLongestName) + " bytes";
  if (std::any_of(text.begin(), text.end(), is_control)) return "has a control character in it";
  if (text.find_first_of("+#") != std::string::npos) return "has a + or # in it, which are for subscribers";
  if (CString::FromUtf8(text).ToUtf8() != text) return "is no text in UTF-8";
  return "";
}

void CheckPrefix(const std::string& prefix) {
  if (const std::string why = WhyNoTopic(prefix); !why.empty()) {
    throw NoUrl("needs a prefix for its topics after the host, and that " + why);
  }
  if (prefix.starts_with('$') || ("/" + prefix + "/").find("//") != std::string::npos) {
    throw NoUrl("needs a prefix of levels that are not empty, the first one without a $");
  }
}

}  // namespace

std::string MqttBroker::Name() const {
  return HostAndPort(host, port);
}

MqttBroker ReadMqttUrl(const std::string& text) {
  const Url url = ReadUrl(text);
  const bool tls = url.scheme == "mqtts";
  if (!tls && url.scheme != "mqtt") throw NoUrl("names no broker");
  if (url.has_password) throw PasswordInAddress("--mqtt", kPasswordVariable);
  if (!url.wrong.empty()) throw NoUrl("has an address that is none: " + url.wrong);
  if (url.host.empty()) throw NoUrl("names no host");
  CheckPrefix(url.path);
  return {tls, url.user, url.host, url.port > 0 ? url.port : tls ? 8883 : 1883, url.path};
}

void CheckMqttId(const std::string& id) {
  std::string why = WhyNoTopic(id);
  if (id.find('/') != std::string::npos) why = "has a / in it, which parts topics";
  if (!why.empty()) throw Failure(ExitCode::usage, "--mqtt-id \"" + id + "\" " + why);
}

std::string DefaultMqttId(const std::string& model) {
  char name[HOST_NAME_MAX + 1] = "";
  gethostname(name, sizeof name - 1);
  std::string id;
  for (const char c : name + ('-' + model)) {
    const bool passes = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '_';
    if (passes || !id.ends_with('-')) id += passes ? c : '-';
  }
  return id;
}

std::string ReadMqttPassword(const MqttOptions& options) {
  if (!options.broker.user.empty()) return ReadPassword(options.password_file, kPasswordVariable);
  if (options.password_file.empty()) return "";
  throw Failure(ExitCode::usage, "--mqtt-password-file needs a user: --mqtt mqtts://USER@HOST/PREFIX");
}

}  // namespace host
