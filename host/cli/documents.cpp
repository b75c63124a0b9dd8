#include "gpsengine/platform/application.h"
#include "host/cli/clihelp.h"
#include "host/cli/commands.h"
#include "host/commands/modellists.h"
#include "host/corrections/source.h"
#include "host/network/rfc2217line.h"
#include "host/records/projection.h"
#include "host/server/mqttlink.h"

namespace host {

namespace {

/// The help of a command, or of the program for an empty name.
std::string HelpOf(const CLI::App& app, const std::string& topic) {
  const auto print = [](const CLI::App& command, const std::string& name) {
    return command.get_formatter()->make_help(&command, name, CLI::AppFormatMode::Normal);
  };
  if (topic.empty()) return print(app, app.get_name());
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_name() == topic) return print(*command, app.get_name() + ' ' + topic);
  }
  throw Failure(ExitCode::usage, "no command is called \"" + topic + "\"; gpsengine --help lists them");
}

}  // namespace

std::string VersionText() {
  return GPSENGINE_VERSION "\n" + Projection::Version() + '\n' + Rfc2217Version() + '\n' + NetworkVersion() +
         '\n' + MqttLink::Version();
}

void AddDocuments(CLI::App& app, Job& job) {
  const auto add = [&](CLI::App& parent, const char* name, const char* what,
                       std::function<std::string()> text) {
    auto* command = parent.add_subcommand(name, what);
    command->callback([&job, text] { job = Prints(text); });
    return command;
  };
  add(app, "receivers-doc", "Print docs/receivers.md", [] {
    AfxGetApp()->SetProfilePath("");  // the rates of the models, not those that this user has kept
    return ReceiversDoc();
  })->group("");
  add(app, "man", "Print the manual page", [&app] { return ManualPage(app, GPSENGINE_VERSION); });
  auto* completion = app.add_subcommand("completion", "Print a script that completes commands in a shell");
  completion->require_subcommand(1);
  add(*completion, "bash", "For bash", [] { return kBashCompletion; });
  add(*completion, "zsh", "For zsh", [] { return kZshCompletion; });
  auto words = std::make_shared<std::vector<std::string>>();
  add(app, "complete", "List what may stand at the cursor",
      [&app, words] { return Completions(app, *words); })
      ->group("")
      ->add_option("words", *words, "The words up to the cursor");
  add(app, "version", "Print the version", [] { return VersionText() + '\n'; })->group("");
  auto topic = std::make_shared<std::string>();
  add(app, "help", "Print what a command takes", [&app, topic] { return HelpOf(app, *topic); })
      ->group("")
      ->add_option("command", *topic, "The command");
}

}  // namespace host
