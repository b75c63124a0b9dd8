#pragma once

#include <string>

#include "host/records/gpsdsink.h"
#include "host/records/lastposition.h"
#include "host/server/mqttlink.h"
#include "host/session/session.h"

namespace host {

/// The outlet to an MQTT broker: positions, satellites and what becomes of the receiver, as docs/json.md has
/// them. It shows nothing to the user.
class MqttOutlet : public Outlet, private GpsdSink {
 public:
  /// Throws a Failure if the options cannot be used. The session's feed is known.
  MqttOutlet(Session& session, const MqttOptions& options, const MqttLimits& limits = {});

  Sink* Records() override { return this; }
  void OnEvent(RunEvent event) override;
  void Step() override;
  bool Finish() override;

 private:
  bool OnData(const Record& record) override;
  bool OnSky(const Sky& sky) override;
  bool OnRawData(const CGPSDataRaw&) override { return false; }
  bool OnEphemeris(const CGPSDataEphemeris&) override { return false; }
  bool OnBin(const Block&) override { return false; }
  bool OnSentence(const Fields&) override { return false; }
  void PassLines();
  const char* State() const;

  Session& session_;
  std::string json_;
  LastPosition position_;
  bool understood_ = false;
  const char* state_ = "";  // as it was told last
  MqttLink link_;
};

}  // namespace host
