#include "host/server/mqttlink.h"

#include <utility>

#include "gpsengine/face/words.h"
#include "host/run/face.h"
#include "host/run/failure.h"
#include "host/server/mqttconnection.h"

namespace host {

MqttLink::MqttLink(const MqttOptions& options, const std::string& will, const MqttLimits& limits)
    : will_(will), patience_(limits.farewell), queue_(std::make_shared<MqttQueue>(limits.queue)) {
  std::packaged_task<void()> task(
      [connection = std::make_shared<MqttConnection>(options, will, limits, queue_)] { connection->Run(); });
  ended_ = task.get_future();
  thread_ = std::thread(std::move(task));
}

MqttLink::~MqttLink() {
  queue_->SetState(will_);
  queue_->Close();
  if (ended_.wait_for(patience_ + std::chrono::seconds(1)) == std::future_status::ready) {
    thread_.join();
  } else {
    Complain("messages that did not reach the MQTT broker: " + std::to_string(queue_->Waiting()));
    thread_.detach();
  }
}

std::string MqttLink::Version() {
  int major = 0, minor = 0, revision = 0;
  mosquitto_lib_version(&major, &minor, &revision);
  return Print("libmosquitto %d.%d.%d", major, minor, revision);
}

}  // namespace host
