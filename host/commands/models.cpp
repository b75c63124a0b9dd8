#include "host/commands/models.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "host/commands/rehearse.h"
#include "host/records/jsonwriter.h"
#include "host/run/failure.h"

namespace host {

namespace {

#define ANSWER(operation, heading)                                                            \
  {                                                                                           \
#operation, heading, [](CGPSReceiver & receiver) -> bool { return receiver.operation(); } \
  }

constexpr Answer kAnswers[] = {
    ANSWER(HasRawData, "RAW"),
    ANSWER(GGASendsOrthoHeight, "ORTHO"),
    ANSWER(HasDGPSSupport, "DGPS"),
    ANSWER(ImplementsQueryNmea, "QNMEA"),
    ANSWER(ImplementsQueryGpsSettings, "QSET"),
    ANSWER(ImplementsBeacon, "BEACON"),
    ANSWER(ImplementsSetElevMask, "MASK"),
    ANSWER(ImplementsSetNmea, "NMEA"),
    ANSWER(ImplementsResetAll, "RESET"),
    ANSWER(IsAvailable, "AVAIL"),
    ANSWER(IsRtkReceiver, "RTK"),
    ANSWER(IsExternalDriver, "EXTDRV"),
    ANSWER(UseExternalSettings, "EXTSET"),
};

#undef ANSWER

constexpr std::size_t kNameWidth = 17, kAnswerWidth = 26;

std::string Padded(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

std::string ListOfNames(const CGPSEngine& engine) {
  std::string names;
  for (const auto& receiver : engine.GetReceivers()) {
    names += (names.empty() ? "\"" : ", \"") + receiver->GetName().ToUtf8() + '"';
  }
  return names;
}

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

CGPSReceiver& SelectModel(CGPSEngine& engine, const std::string& name) {
  const auto& receivers = engine.GetReceivers();
  const auto found = std::find_if(receivers.begin(), receivers.end(),
                                  [&](const auto& receiver) { return receiver->GetName().ToUtf8() == name; });
  if (found == receivers.end()) {
    throw Failure(ExitCode::usage,
                  "no model is called \"" + name + "\"; the models are " + ListOfNames(engine));
  }
  return **found;
}

std::string ModelsAsTable(const CGPSEngine& engine) {
  std::string table = Padded("MODEL", kNameWidth) + " BAUD";
  for (const auto& answer : kAnswers) table += std::string("  ") + answer.heading;
  table += '\n';
  for (const auto& receiver : engine.GetReceivers()) {
    table += Padded(receiver->GetName().ToUtf8(), kNameWidth) + ' ' +
             std::to_string(receiver->GetDefaultBaudrate());
    for (const auto& answer : kAnswers) {
      table += "  " + Padded(answer.ask(*receiver) ? "Y" : "-", std::string_view(answer.heading).size());
    }
    table.erase(table.find_last_not_of(' ') + 1);
    table += '\n';
  }
  table += "\nBAUD is GetDefaultBaudrate; the columns behind it are the answers of\n";
  for (const auto& answer : kAnswers) table += "  " + Padded(answer.heading, 7) + answer.operation + '\n';
  return table;
}

std::string ModelsAsJson(const CGPSEngine& engine) {
  std::string text;
  JsonWriter json(text);
  json.BeginArray();
  for (const auto& receiver : engine.GetReceivers()) {
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
    text += "  " + Padded(answer.operation, kAnswerWidth) + (answer.ask(receiver) ? " yes\n" : " no\n");
  }
  text += "\nOperations for \"gpsengine command --model\":\n";
  const auto operations = OperationsOf(receiver);
  std::size_t width = 0;
  for (const Operation* operation : operations) width = std::max(width, Usage(*operation).size());
  for (const Operation* operation : operations) {
    text += "  " + Padded(Usage(*operation), width) + "  " + operation->summary + '\n';
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
  for (const Operation* operation : OperationsOf(receiver)) {
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
