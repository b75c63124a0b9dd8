#include "host/commands/receiversdoc.h"

#include <map>

#include "host/commands/models.h"
#include "host/commands/rehearse.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

constexpr char kIntroduction[] =
    "# The receivers\n"
    "\n"
    "Printed by `gpsengine receivers-doc`; a change here is lost. Each operation is shown as `gpsengine "
    "command --dry-run`\n"
    "rehearses it: what it writes to an open port, and the milliseconds it waits behind that.\n"
    "\n";

std::string Seconds(long long ms) {
  std::string text;
  AppendFixed(text, static_cast<double>(ms) / 1000.0, 1);
  return text + " s";
}

std::string CapabilityTable() {
  std::string table = "| Model | Baud |";
  std::string rule = "|---|---|";
  for (const auto& answer : Answers()) {
    table += std::string(" `") + answer.operation + "` |";
    rule += "---|";
  }
  table += '\n' + rule + '\n';
  for (const auto& receiver : Models()) {
    table +=
        "| " + receiver->GetName().ToUtf8() + " | " + std::to_string(receiver->GetDefaultBaudrate()) + " |";
    for (const auto& answer : Answers()) table += answer.ask(*receiver) ? " yes |" : " |";
    table += '\n';
  }
  return table + '\n';
}

std::string Call(const Operation& operation, const Arguments& arguments, const std::string& model) {
  const Transcript transcript = Rehearse(model, operation, Prepare(operation, arguments));
  std::string text = "`" + CallText(operation, arguments) + "`";
  if (transcript.steps.empty()) return text + ": writes nothing\n\n";
  if (transcript.Time() > 0) text += ", " + Seconds(transcript.Time());
  return text + "\n\n```\n" + transcript.Text() + "```\n\n";
}

std::string OperationsText(CGPSReceiver& receiver) {
  const std::string model = receiver.GetName().ToUtf8();
  std::string text;
  for (const auto& [operation, times] : OffersOf(receiver)) {
    if (operation->examples.empty()) continue;
    text += "### " + std::string(operation->name) + ": " + operation->summary + "\n\n";
    for (const auto& arguments : ExamplesFor(*operation, receiver))
      text += Call(*operation, arguments, model);
  }
  return text;
}

}  // namespace

std::string ReceiversDoc() {
  std::string doc = kIntroduction + CapabilityTable();
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
