#pragma once

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "gpsengine/face/operations.h"
#include "gpsengine/platform/rehearsal.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "simulator/simulator.h"

/// Does what users write, one operation after another between semicolons. Gives the result of the last one.
inline gps::Result Do(CGPSReceiver& receiver, const std::string& operations) {
  std::istringstream calls(operations);
  auto result = gps::Result::none;
  for (std::string call; std::getline(calls, call, ';');) {
    std::istringstream stream(call);
    std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
    const gps::Operation& operation = gps::FindOperation(words[0]);
    words.erase(words.begin());
    result = gps::Prepare(operation, {words})(receiver);
  }
  return result;
}

/// All that a model can be asked, in an order that leaves its raw data on.
inline void RunEverything(CGPSReceiver& receiver) {
  Do(receiver,
     "reset;default-nmea;query-nmea;query-settings;query-beacon;set-beacon 310.0 100;set-elevation-mask 7;"
     "query-elevation-mask;query-dgps;set-dgps waas;query-omnistar;dgps-status on;query-lband-satellites;"
     "set-lband 1557.845 1200;query-waas;raw-interval 1;post-processing on;raw-interval 1;keep-alive");
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
