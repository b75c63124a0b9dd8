#include "host/server/mqttbroker.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "gpsengine/platform/cstring.h"
#include "gpsengine/text/words.h"
#include "host/run/face.h"
#include "host/run/failure.h"
#include "host/server/listener.h"

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

/// Takes the part of a text up to a mark, if it is there, and the mark.
std::string TakeUpTo(std::string& text, std::size_t mark) {
  if (mark == std::string::npos) return "";
  std::string part = text.substr(0, mark);
  text.erase(0, mark + 1);
  return part;
}

void CheckPrefix(const std::string& prefix) {
  if (const std::string why = WhyNoTopic(prefix); !why.empty()) {
    throw NoUrl("needs a prefix for its topics after the host, and that " + why);
  }
  if (prefix.starts_with('$') || ("/" + prefix + "/").find("//") != std::string::npos) {
    throw NoUrl("needs a prefix of levels that are not empty, the first one without a $");
  }
}

void ReadAddress(const std::string& address, MqttBroker& broker) {
  const auto bracket = address.starts_with('[') ? address.find(']') : std::string::npos;
  const auto colon = address.find(':', bracket == std::string::npos ? 0 : bracket);
  broker.host = bracket == std::string::npos ? address.substr(0, colon) : address.substr(1, bracket - 1);
  if (broker.host.empty()) throw NoUrl("names no host");
  if (colon == std::string::npos) return;
  const auto port = ReadNumber<int>(std::string_view(address).substr(colon + 1));
  if (!port || *port < 1 || *port > 65535) throw NoUrl("has a port that is no number from 1 to 65535");
  broker.port = *port;
}

}  // namespace

std::string MqttBroker::Name() const {
  return AddressAndPort(host, port);
}

MqttBroker ReadMqttUrl(const std::string& url) {
  MqttBroker broker;
  broker.tls = url.starts_with("mqtts://");
  if (!broker.tls && !url.starts_with("mqtt://")) throw NoUrl("names no broker");
  broker.port = broker.tls ? 8883 : 1883;
  broker.prefix = url.substr(url.find("//") + 2);
  // A user's name may hold an @, and none of the rest can before the first /.
  std::string address = TakeUpTo(broker.prefix, std::min(broker.prefix.find('/'), broker.prefix.size()));
  broker.user = TakeUpTo(address, address.rfind('@'));
  if (broker.user.find(':') != std::string::npos) {
    throw Failure(ExitCode::usage,
                  std::string("--mqtt takes no password, since every user of this machine can read a command "
                              "line: leave it out of the URL, and set ") +
                      kPasswordVariable + " or name a file by --mqtt-password-file");
  }
  ReadAddress(address, broker);
  CheckPrefix(broker.prefix);
  return broker;
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
  if (options.password_file.empty()) {
    const char* const password = std::getenv(kPasswordVariable);
    return password == nullptr || options.broker.user.empty() ? "" : password;
  }
  if (options.broker.user.empty()) {
    throw Failure(ExitCode::usage, "--mqtt-password-file needs a user: --mqtt mqtts://USER@HOST/PREFIX");
  }
  errno = 0;
  std::ifstream file(options.password_file);
  std::string password;
  std::getline(file, password);
  if (password.ends_with('\r')) password.pop_back();
  if (!password.empty()) return password;
  throw Failure(ExitCode::failed, "no password in " + options.password_file + ": " +
                                      (errno != 0 ? std::strerror(errno) : "its first line is empty"));
}

}  // namespace host
