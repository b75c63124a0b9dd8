#pragma once

#include <mosquitto.h>

#include <chrono>
#include <memory>
#include <random>
#include <string>

#include "host/run/deadline.h"
#include "host/server/mqttlink.h"
#include "host/server/mqttqueue.h"

namespace host {

/// libmosquitto, set up as long as one of these lives.
struct MosquittoLibrary {
  MosquittoLibrary() { mosquitto_lib_init(); }
  ~MosquittoLibrary() { mosquitto_lib_cleanup(); }
};

/// The connection to a broker, made, lost and made again. It belongs to one thread once Run is called.
class MqttConnection {
 public:
  MqttConnection(const MqttOptions& options, const std::string& will, const MqttLimits& limits,
                 std::shared_ptr<MqttQueue> queue);

  /// Publishes until the queue is closed, and what waits then.
  void Run();

 private:
  enum class State { away, connecting, open };

  void SetUp(const MqttOptions& options, const std::string& will);
  void SetUpTls(const std::string& ca_file);
  void Connect();
  bool GoesOn();
  void Wait();
  int Read();
  void Publish();
  void OnConnect(int code);
  void OnAnswer();
  void Lose(const std::string& why);
  std::string ReasonOf(int error) const;
  void Leave();
  Deadline::Moment NextAt() const;

  const MosquittoLibrary library_;
  const std::string topic_;  // up to its last level
  const MqttBroker broker_;
  const std::string name_;  // for people
  const MqttLimits limits_;
  const std::shared_ptr<MqttQueue> queue_;
  const std::unique_ptr<mosquitto, decltype(&mosquitto_destroy)> client_;
  std::mt19937 random_{std::random_device()()};
  State state_ = State::away;
  std::string refusal_;  // by the broker
  std::string error_;    // that the library has told of
  std::string told_;     // on standard error, since the connection was last open
  bool was_open_ = false;
  std::size_t in_flight_ = 0;
  std::chrono::milliseconds pause_;
  Deadline::Moment since_ = Deadline::Clock::now();  // that it is open, or away
  Deadline retry_, answer_, farewell_;
};

}  // namespace host
