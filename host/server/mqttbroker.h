#pragma once

#include <string>

namespace host {

/// An MQTT broker, and where on it something is published.
struct MqttBroker {
  bool tls = false;
  std::string user;  ///< Empty for none.
  std::string host;  ///< A name or an address; empty for no broker at all.
  int port = 0;
  std::string prefix;  ///< Of every topic, one level or several.

  /// "broker.example:8883".
  std::string Name() const;
};

/// Reads mqtts://USER@HOST:PORT/PREFIX, or mqtt://, of which user and port may be missing. Throws a Failure
/// that says what is wrong; a password is refused and not repeated.
MqttBroker ReadMqttUrl(const std::string& url);

/// What the user says of an MQTT broker.
struct MqttOptions {
  MqttBroker broker;
  std::string id;             ///< What is published stands under prefix/id; empty: by host name and model.
  std::string ca_file;        ///< Certificates to trust in place of the system's; empty for those.
  std::string password_file;  ///< Its first line; empty: the variable GPSENGINE_MQTT_PASSWORD.
};

/// Throws a Failure if that cannot be a level of a topic.
void CheckMqttId(const std::string& id);
/// An id of the machine's name and the model's.
std::string DefaultMqttId(const std::string& model);
/// The password of the user, empty for none. Throws a Failure if the file has none.
std::string ReadMqttPassword(const MqttOptions& options);

}  // namespace host
