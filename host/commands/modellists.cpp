#include "host/commands/modellists.h"

#include <algorithm>
#include <map>

#include "gpsengine/face/models.h"
#include "gpsengine/face/words.h"
#include "host/records/jsonwriter.h"
#include "host/run/face.h"

namespace host {

namespace {

constexpr std::size_t kNameWidth = 17, kAnswerWidth = 39;

/// Writes the members that tell of a model.
void Describe(CGPSReceiver& receiver, JsonWriter& json) {
  json.Key("name");
  json.Utf8(receiver.GetName().ToUtf8());
  json.Member("class", receiver.GetRuntimeClass()->m_lpszClassName);
  json.Member("GetDefaultBaudrate", receiver.GetDefaultBaudrate());
  for (const auto& answer : Answers()) json.Member(answer.operation, answer.ask(receiver));
}

std::string Usage(const Operation& operation) {
  return *operation.arguments == '\0' ? operation.name
                                      : std::string(operation.name) + ' ' + operation.arguments;
}

constexpr char kIntroduction[] =
    "# The receivers\n"
    "\n"
    "Printed by `gpsengine receivers-doc`; a change here is lost. Each operation is shown as `gpsengine "
    "command --dry-run`\n"
    "rehearses it: what it writes to an open port, and the milliseconds it waits after that.\n"
    "\n";

std::string ExampleText(const Offer::Example& example) {
  const Transcript& transcript = example.transcript;
  std::string text = "`" + example.call + "`";
  if (transcript.steps.empty()) return text + ": writes nothing\n\n";
  if (transcript.Time() > 0) text += Print(", %.1f s", static_cast<double>(transcript.Time()) / 1000.0);
  return text + "\n\n```\n" + transcript.Text() + "```\n\n";
}

std::string OperationsText(CGPSReceiver& receiver) {
  std::string text;
  for (const auto& [operation, examples] : OffersOf(receiver)) {
    text += "### `" + Usage(*operation) + "`: " + operation->summary + "\n\n";
    for (const auto& example : examples) text += ExampleText(example);
  }
  return text;
}

}  // namespace

std::string ModelsAsTable() {
  std::string table = Padded("MODEL", kNameWidth) + " BAUD";
  for (const auto& answer : Answers()) table += std::string("  ") + answer.heading;
  table += '\n';
  for (const auto& receiver : Models()) {
    table += Padded(receiver->GetName().ToUtf8(), kNameWidth) + ' ' +
             std::to_string(receiver->GetDefaultBaudrate());
    for (const auto& answer : Answers()) {
      table += "  " + Padded(answer.ask(*receiver) ? "Y" : "-", std::string_view(answer.heading).size());
    }
    table.erase(table.find_last_not_of(' ') + 1);
    table += '\n';
  }
  table += "\nBAUD is GetDefaultBaudrate; the columns after it:\n";
  for (const auto& answer : Answers())
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
  for (const auto& answer : Answers()) {
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
  for (const auto& [operation, examples] : OffersOf(receiver)) {
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

std::string ReceiversDoc() {
  std::string doc = kIntroduction + ("```\n" + ModelsAsTable()) + "```\n\n";
  std::map<std::string, std::string> first_with;  // the model that was the first to have these operations
  for (const auto& receiver : Models()) {
    const std::string model = receiver->GetName().ToUtf8();
    doc += "## " + model + "\n\n";
    const std::string operations = OperationsText(*receiver);
    const auto [first, is_new] = first_with.emplace(operations, model);
    doc += is_new ? operations : "Its operations are those of " + first->second + ".\n\n";
  }
  doc.pop_back();
  return doc;
}

}  // namespace host
