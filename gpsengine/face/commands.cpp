#include "gpsengine/face/commands.h"

#include "gpsengine/face/engineuse.h"
#include "gpsengine/face/models.h"

namespace gps {

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
  return Rehearse(model, found, PrepareOffered(found, ArgumentsOf(arguments), FindModel(model)));
}

}  // namespace gps
