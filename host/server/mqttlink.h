#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "host/server/mqttbroker.h"
#include "host/server/mqttqueue.h"

namespace host {

/// What a broker is granted.
struct MqttLimits {
  std::size_t queue = 4 << 20;  ///< Bytes of messages that wait for it.
  std::chrono::milliseconds first_pause{1000}, longest_pause{60'000};  ///< Between two attempts to reach it.
  std::chrono::milliseconds answer{20'000};                            ///< For what it has not answered yet.
  std::chrono::milliseconds farewell{3'000};                           ///< At the end, for what still waits.
};

/// The way to an MQTT broker: a thread of its own looks for it, publishes what is put into the queue, each
/// message until the broker has acknowledged it, and tells on standard error when the broker is lost and when
/// it is back. It subscribes to nothing.
class MqttLink {
 public:
  /// `will` is the last state, which the broker tells if the program cannot, and which is told at the end.
  /// Throws a Failure if the options cannot be used, or if the program was built without MQTT.
  MqttLink(const MqttOptions& options, const std::string& will, const MqttLimits& limits = {});
  /// Publishes what waits, as far as that goes in time, and tells how much did not.
  ~MqttLink();

  MqttQueue& Queue() { return *queue_; }
  /// The library behind it, for people.
  static std::string Version();

 private:
  const std::string will_;
  const std::chrono::milliseconds patience_;
  const std::shared_ptr<MqttQueue> queue_;  // outlives a thread that hangs in a look-up of a name
  std::future<void> ended_;
  std::thread thread_;
};

}  // namespace host
