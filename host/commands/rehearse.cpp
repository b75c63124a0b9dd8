#include "host/commands/rehearse.h"

#include <algorithm>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/link/ack.h"
#include "host/commands/models.h"
#include "host/run/port.h"

namespace host {

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

Transcript Rehearse(const std::string& model, const Operation& operation, const Action& action,
                    bool port_opens) {
  CRehearsal line(kPort, port_opens);
  CGPSEngine engine;
  CGPSReceiver& receiver = SelectModel(engine, model);
  receiver.SetProperties();  // some commands carry the baud rate
  receiver.SetupReceiver(kPort, 0, 0.0, "", false);
  if (port_opens) operation.kind == Operation::Kind::starts ? receiver.OpenPort() : receiver.Initialize();
  line.ForgetSteps();
  line.SetStepHandler([](const CRehearsal::Step& step) {
    if (step.kind == CRehearsal::StepKind::waitForMessage) Acknowledge();
  });
  Transcript transcript;
  transcript.result = action(receiver);
  line.SetStepHandler({});
  transcript.steps = line.GetSteps();
  return transcript;
}

bool HasNoEffect(const Operation& operation, const Transcript& transcript) {
  return operation.answer != nullptr && transcript.result == Result::none && transcript.steps.empty();
}

std::vector<const Operation*> OperationsOf(CGPSReceiver& receiver) {
  const std::string model = receiver.GetName().ToUtf8();
  const auto is_empty = [&](const Operation& operation) {
    return std::all_of(operation.examples.begin(), operation.examples.end(), [&](const Arguments& arguments) {
      return HasNoEffect(operation, Rehearse(model, operation, Prepare(operation, arguments)));
    });
  };
  std::vector<const Operation*> operations;
  for (const auto& operation : Operations()) {
    if (IsOffered(operation, receiver) && !(operation.answer != nullptr && is_empty(operation))) {
      operations.push_back(&operation);
    }
  }
  return operations;
}

const char* NameOf(Result result) {
  switch (result) {
    case Result::yes:
      return "true";
    case Result::no:
      return "false";
    case Result::none:
      break;
  }
  return "none";
}

}  // namespace host
