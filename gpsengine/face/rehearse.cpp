#include "gpsengine/face/rehearse.h"

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/face/models.h"
#include "gpsengine/face/port.h"
#include "gpsengine/link/ack.h"

namespace gps {

namespace {

void Acknowledge() {
  CGPSData data;
  data.m_Status.m_bAck = true;
  CAck::OnNewGPSData(&data);
}

}  // namespace

long long Transcript::Time() const {
  long long time = 0;
  for (const auto& step : steps) time += step.ms;
  return time;
}

std::string Transcript::Text() const {
  std::string text;
  for (const auto& step : steps) text += CRehearsal::Describe(step) + '\n';
  return text;
}

Transcript Rehearse(const std::string& model, const Action& action, bool port_opens,
                    std::optional<long long> stop_after) {
  const CGPSReceiver::SharedState shared;
  CRehearsal line(kPort, port_opens);
  CGPSEngine engine;  // whose receivers are as new
  CGPSReceiver& receiver = *engine.FindReceiver(FindModel(model).GetName());
  receiver.SetProperties();  // some commands carry the baud rate
  receiver.SetupReceiver(kPort, 0, 0.0, "", false);
  if (port_opens) receiver.OpenPort();
  line.ForgetSteps();
  if (stop_after) line.StopAfter(static_cast<DWORD>(*stop_after));
  line.SetStepHandler([](const CRehearsal::Step& step) {
    if (step.kind == CRehearsal::StepKind::waitForMessage) Acknowledge();
  });
  Transcript transcript;
  transcript.result = action(receiver);
  transcript.steps = line.GetSteps();
  return transcript;
}

bool HasNoEffect(const Operation& operation, const Transcript& transcript) {
  return operation.answer != nullptr && transcript.result == Result::none && transcript.steps.empty();
}

const char* NameOf(Result result) {
  constexpr const char* kNames[] = {"none", "true", "false"};  // in the order of Result
  return kNames[static_cast<int>(result)];
}

}  // namespace gps
