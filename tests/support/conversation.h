#pragma once

#include <string>
#include <vector>

#include "gpsengine/platform/rehearsal.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "simulator/simulator.h"

/// All that a model can be asked, in an order that leaves its raw data on.
inline void RunEverything(CGPSReceiver& receiver) {
  receiver.ResetAll(false);
  receiver.SetDefaultNMEA();
  receiver.QueryNmeaActive();
  receiver.QueryGpsSettings();
  receiver.QueryBeacon();
  receiver.SetBeacon(BEACON_MODE_MANUAL, "310.0", "100");
  receiver.SetSatElevMask(7);
  receiver.QuerySatElevMask();
  receiver.QueryDgpsMode();
  receiver.SetDgpsMode(DGPS_MODE_WAAS);
  receiver.QueryOmniStar();
  receiver.DgpsStatusMsg(true);
  receiver.QueryLbandSatellites();
  receiver.SetLbandFrequency(1557.845, 1200);
  receiver.QueryWAAS();
  receiver.SetRawDataOutputInterval(1.0);
  receiver.EnablePostProcessing(true);
  receiver.SetRawDataOutputInterval(1.0);
  receiver.KeepAlive();
}

/// What went over a line.
struct Conversation {
  std::string said;                     ///< By the driver.
  std::string heard;                    ///< From the simulated receiver.
  std::vector<std::string> complaints;  ///< Of the simulated receiver.
};

/// A driver and the simulated receiver of its model, in rehearsed time, and some seconds more of what it then
/// sends.
inline Conversation Talk(CGPSReceiver& receiver, double dSeconds = 4.0) {
  const auto simulated = simulator::MakeReceiver({.model = receiver.GetName().ToUtf8()});
  Conversation conversation;
  CRehearsal line;
  line.SetStepHandler([&](const CRehearsal::Step& step) {
    simulated->Receive(step.bytes);
    conversation.said += step.bytes;
    conversation.heard += simulated->Advance(step.ms / 1000.0);
  });
  receiver.SetupReceiver(1, 0, 0.0, "", false);
  receiver.Initialize();
  RunEverything(receiver);
  conversation.heard += simulated->Advance(dSeconds);
  line.SetStepHandler(nullptr);
  receiver.Suspend();
  conversation.complaints = simulated->TakeComplaints();
  return conversation;
}

/// A simulated receiver on a line of its own, so many times as fast as in life.
inline std::unique_ptr<simulator::PtyRunner> RunSimulated(const std::string& model, double speed_up) {
  simulator::PtyRunner::Settings settings;
  settings.speed_up = speed_up;
  settings.paced = false;
  auto runner = std::make_unique<simulator::PtyRunner>(simulator::MakeReceiver({.model = model}), settings);
  runner->Start();
  return runner;
}
