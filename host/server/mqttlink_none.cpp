#include "host/run/failure.h"
#include "host/server/mqttlink.h"

namespace host {

MqttLink::MqttLink(const MqttOptions&, const std::string&, const MqttLimits&) : patience_(0) {
  throw Failure(ExitCode::usage,
                "--mqtt is not available, since this program was built without libmosquitto: install "
                "libmosquitto-dev and pkgconf, and build it again");
}

MqttLink::~MqttLink() = default;

std::string MqttLink::Version() {
  return "without libmosquitto";
}

}  // namespace host
