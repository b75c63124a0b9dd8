#include "gpsengine/face/models.h"

#include <algorithm>
#include <map>
#include <utility>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/face/error.h"
#include "gpsengine/face/words.h"

namespace gps {

namespace {

#define ANSWER(operation, heading, meaning)                                                            \
  {                                                                                                    \
#operation, heading, meaning, [](CGPSReceiver & receiver) -> bool { return receiver.operation(); } \
  }

constexpr Answer kAnswers[] = {
    ANSWER(HasRawData, "RAW", "sends raw measurements"),
    ANSWER(GGASendsOrthoHeight, "ORTHO", "its heights are above mean sea level"),
    ANSWER(HasDGPSSupport, "DGPS", "its source of corrections can be chosen"),
    ANSWER(ImplementsQueryNmea, "QNMEA", "tells which sentences are on"),
    ANSWER(ImplementsQueryGpsSettings, "QSET", "tells its settings"),
    ANSWER(ImplementsBeacon, "BEACON", "has a beacon receiver"),
    ANSWER(ImplementsSetElevMask, "MASK", "its elevation mask can be set"),
    ANSWER(ImplementsSetNmea, "NMEA", "its sentences can be chosen"),
    ANSWER(ImplementsResetAll, "RESET", "can be reset to a known configuration"),
    ANSWER(IsAvailable, "AVAIL", "can be used"),
    ANSWER(IsRtkReceiver, "RTK", "is an RTK receiver"),
    ANSWER(IsExternalDriver, "EXTDRV", "is read by a driver of its own"),
    ANSWER(UseExternalSettings, "EXTSET", "is set up outside the library"),
};

#undef ANSWER

std::optional<Action> PrepareFor(CGPSReceiver& receiver, const Operation& operation,
                                 const Arguments& arguments) try {
  return Prepare(operation, arguments, receiver);
} catch (const Error&) {
  return std::nullopt;
}

std::vector<Offer> FindOffers(CGPSReceiver& receiver) {
  const std::string model = receiver.GetName().ToUtf8();
  std::vector<Offer> offers;
  for (const Operation& operation : Operations()) {
    if (!IsOffered(operation, receiver)) continue;
    Offer offer{&operation, {}};
    bool has_effect = operation.answer == nullptr;
    for (const Arguments& arguments : ExamplesOf(operation)) {
      const auto action = PrepareFor(receiver, operation, arguments);
      if (!action) continue;
      offer.examples.push_back({CallText(operation, arguments), Rehearse(model, *action)});
      has_effect = has_effect || !HasNoEffect(operation, offer.examples.back().transcript);
    }
    if (has_effect) offers.push_back(std::move(offer));
  }
  return offers;
}

}  // namespace

std::span<const Answer> Answers() {
  return kAnswers;
}

const std::vector<std::unique_ptr<CGPSReceiver>>& Models() {
  static const auto* const engine = new CGPSEngine;
  return engine->GetReceivers();
}

CGPSReceiver& FindModel(const std::string& name) {
  const auto found = std::find_if(Models().begin(), Models().end(), [&](const auto& receiver) {
    return IsSameName(receiver->GetName().ToUtf8(), name);
  });
  if (found != Models().end()) return **found;
  std::vector<std::string> names;
  for (const auto& receiver : Models()) names.push_back(receiver->GetName().ToUtf8());
  throw NoSuch("model", name, names, "\"");
}

const std::vector<Offer>& OffersOf(CGPSReceiver& receiver) {
  static std::map<std::string, std::vector<Offer>> found;
  const auto [offers, is_new] = found.try_emplace(receiver.GetName().ToUtf8());
  if (is_new) offers->second = FindOffers(receiver);
  return offers->second;
}

void CheckOffer(const Operation& operation, CGPSReceiver& receiver, const std::string& advice) {
  if (IsOffered(operation, receiver)) return;
  std::vector<std::string> names;
  for (const Offer& offer : OffersOf(receiver)) names.push_back(offer.operation->name);
  throw Error(ErrorCode::refused, "the model " + receiver.GetName().ToUtf8() + " does not offer " +
                                      operation.name + "; it offers " + Join(names) + advice);
}

Error NothingSent(const Operation& operation, const Arguments& arguments, const std::string& model) {
  return Error(ErrorCode::refused,
               "the model " + model + " has no " + CallText(operation, arguments) + ": nothing was sent");
}

Action PrepareOffered(const Operation& operation, const Arguments& arguments, CGPSReceiver& receiver) {
  Action action = Prepare(operation, arguments, receiver);
  CheckOffer(operation, receiver);
  const auto& offers = OffersOf(receiver);
  const auto is_it = [&](const Offer& offer) { return offer.operation == &operation; };
  if (std::none_of(offers.begin(), offers.end(), is_it)) {
    throw NothingSent(operation, arguments, receiver.GetName().ToUtf8());
  }
  return action;
}

long long StartTimeOf(CGPSReceiver& receiver) {
  return OffersOf(receiver).front().examples.front().transcript.Time();
}

}  // namespace gps
