#include "host/commands/rehearse.h"

#include <algorithm>
#include <map>
#include <utility>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/link/ack.h"
#include "host/commands/models.h"
#include "host/run/failure.h"
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
                    bool port_opens, std::optional<long long> stop_after) {
  const CGPSReceiver::SharedState shared;
  CRehearsal line(kPort, port_opens);
  CGPSEngine engine;  // whose receivers are as new
  CGPSReceiver& receiver = *engine.FindReceiver(FindModel(model).GetName());
  receiver.SetProperties();  // some commands carry the baud rate
  receiver.SetupReceiver(kPort, 0, 0.0, "", false);
  if (port_opens) operation.kind == Operation::Kind::starts ? receiver.OpenPort() : receiver.Initialize();
  line.ForgetSteps();
  if (stop_after) line.StopAfter(static_cast<DWORD>(*stop_after));
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

std::vector<Arguments> ExamplesFor(const Operation& operation, CGPSReceiver& receiver) {
  std::vector<Arguments> examples = operation.examples;
  std::erase_if(examples, [&](const Arguments& arguments) {
    try {
      Prepare(operation, arguments, receiver);
      return false;
    } catch (const Failure&) {
      return true;
    }
  });
  return examples;
}

namespace {

std::vector<Offer> FindOffers(CGPSReceiver& receiver) {
  const std::string model = receiver.GetName().ToUtf8();
  std::vector<Offer> offers;
  for (const Operation& operation : Operations()) {
    if (!IsOffered(operation, receiver)) continue;
    Offer offer{&operation, {}};
    bool has_effect = operation.answer == nullptr;
    for (const Arguments& arguments : ExamplesFor(operation, receiver)) {
      const Transcript transcript = Rehearse(model, operation, Prepare(operation, arguments));
      has_effect = has_effect || !HasNoEffect(operation, transcript);
      offer.times.emplace_back(CallText(operation, arguments), transcript.Time());
    }
    if (has_effect) offers.push_back(std::move(offer));
  }
  return offers;
}

}  // namespace

const std::vector<Offer>& OffersOf(CGPSReceiver& receiver) {
  static std::map<std::string, std::vector<Offer>> found;
  const auto [offers, is_new] = found.try_emplace(receiver.GetName().ToUtf8());
  if (is_new) offers->second = FindOffers(receiver);
  return offers->second;
}

long long StartTimeOf(CGPSReceiver& receiver) {
  return OffersOf(receiver).front().times.front().second;
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
