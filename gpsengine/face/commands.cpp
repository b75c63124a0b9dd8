#include "gpsengine/face/commands.h"

#include <algorithm>

#include "gpsengine/face/answerreader.h"
#include "gpsengine/face/engineuse.h"
#include "gpsengine/face/models.h"

namespace gps {

namespace {

/// The step in which a command waits for its answer, if one is due.
void AddWait(const Operation& operation, Transcript& transcript) {
  const bool asks = operation.kind == Operation::Kind::asks;
  const auto is_due = [](const CRehearsal::Step& step) { return AnswerReader::IsDueTo(step.bytes); };
  if (!asks && std::ranges::none_of(transcript.steps, is_due)) return;
  const double seconds = asks ? AnswerReader::kForReports : AnswerReader::kForWord;
  transcript.steps.push_back(
      {CRehearsal::StepKind::waitForMessage, {}, static_cast<DWORD>(seconds * 1000.0)});
}

}  // namespace

std::vector<std::string> models() {
  const EngineUse use;
  std::vector<std::string> names;
  for (const auto& receiver : Models()) names.push_back(receiver->GetName().ToUtf8());
  return names;
}

std::vector<std::string> commands(const std::string& model) {
  const EngineUse use;
  std::vector<std::string> calls;
  for (const Offer& offer : OffersOf(FindModel(model))) {
    for (const Offer::Example& example : offer.examples) calls.push_back(example.call);
    if (offer.examples.empty()) calls.push_back(CallText(*offer.operation, {{offer.operation->arguments}}));
  }
  return calls;
}

Transcript rehearse(const std::string& model, const std::string& operation,
                    const std::vector<std::string>& arguments) {
  const EngineUse use;
  const Operation& found = FindOperation(operation);
  Arguments read = ArgumentsOf(arguments);
  const bool waits = TakeWait(found, read);
  Transcript transcript = Rehearse(model, PrepareOffered(found, read, FindModel(model)));
  if (waits) AddWait(found, transcript);
  return transcript;
}

}  // namespace gps
