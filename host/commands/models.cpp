#include "host/commands/models.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "gpsengine/engine/gpsengine.h"
#include "host/commands/rehearse.h"
#include "host/records/jsonwriter.h"
#include "host/run/failure.h"
#include "host/run/words.h"

namespace host {

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

constexpr std::size_t kNameWidth = 17, kAnswerWidth = 39;

/// Writes the members that tell of a model.
void Describe(CGPSReceiver& receiver, JsonWriter& json) {
  json.Key("name");
  json.Utf8(receiver.GetName().ToUtf8());
  json.Member("class", receiver.GetRuntimeClass()->m_lpszClassName);
  json.Member("GetDefaultBaudrate", receiver.GetDefaultBaudrate());
  for (const auto& answer : kAnswers) json.Member(answer.operation, answer.ask(receiver));
}

std::string Usage(const Operation& operation) {
  return *operation.arguments == '\0' ? operation.name
                                      : std::string(operation.name) + ' ' + operation.arguments;
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

std::string ModelsAsTable() {
  std::string table = Padded("MODEL", kNameWidth) + " BAUD";
  for (const auto& answer : kAnswers) table += std::string("  ") + answer.heading;
  table += '\n';
  for (const auto& receiver : Models()) {
    table += Padded(receiver->GetName().ToUtf8(), kNameWidth) + ' ' +
             std::to_string(receiver->GetDefaultBaudrate());
    for (const auto& answer : kAnswers) {
      table += "  " + Padded(answer.ask(*receiver) ? "Y" : "-", std::string_view(answer.heading).size());
    }
    table.erase(table.find_last_not_of(' ') + 1);
    table += '\n';
  }
  table += "\nBAUD is GetDefaultBaudrate; the columns behind it:\n";
  for (const auto& answer : kAnswers)
    table += "  " + Padded(answer.heading, 7) + Padded(answer.meaning, kAnswerWidth) + ' ' +
             answer.operation + '\n';
  return table;
}

std::string ModelsAsJson() {
  std::string text;
  JsonWriter json(text);
  json.BeginArray();
  for (const auto& receiver : Models()) {
    json.BeginObject();
    Describe(*receiver, json);
    json.EndObject();
  }
  json.EndArray();
  return text + '\n';
}

std::string ModelAsText(CGPSReceiver& receiver) {
  std::string text = receiver.GetName().ToUtf8() + " (" + receiver.GetRuntimeClass()->m_lpszClassName +
                     "), " + std::to_string(receiver.GetDefaultBaudrate()) + " baud\n\n";
  for (const auto& answer : kAnswers) {
    text += "  " + Padded(answer.meaning, kAnswerWidth) + (answer.ask(receiver) ? " yes\n" : " no\n");
  }
  text += "\nOperations for \"gpsengine command --model\":\n";
  const auto& offers = OffersOf(receiver);
  std::size_t width = 0;
  for (const Offer& offer : offers) width = std::max(width, Usage(*offer.operation).size());
  for (const Offer& offer : offers) {
    text += "  " + Padded(Usage(*offer.operation), width) + "  " + offer.operation->summary + '\n';
  }
  return text;
}

std::string ModelAsJson(CGPSReceiver& receiver) {
  std::string text;
  JsonWriter json(text);
  json.BeginObject();
  Describe(receiver, json);
  json.Key("operations");
  json.BeginArray();
  for (const auto& [operation, times] : OffersOf(receiver)) {
    json.BeginObject();
    json.Member("name", operation->name);
    json.Member("arguments", operation->arguments);
    if (operation->answer != nullptr) json.Member("answer", operation->answer);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  return text + '\n';
}

}  // namespace host
