#include "host/cli/listcommandline.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <memory>
#include <sstream>

#include "gpsengine/platform/application.h"
#include "host/cli/clidoc.h"
#include "host/cli/values.h"
#include "host/commands/models.h"
#include "host/commands/operations.h"
#include "host/commands/receiversdoc.h"
#include "host/line/config.h"
#include "host/line/ports.h"
#include "host/records/projection.h"
#include "host/simulate.h"

namespace host {

namespace {

// Epochs a second, of a simulated receiver.
constexpr double kFastest = 20.0;

/// The format of a list, in a format's own words.
void AddListFormat(CLI::App& command, std::string& format, const std::string& plain) {
  format = plain;
  command.add_option("--format", format, plain + " or json")
      ->check(CLI::IsMember({plain, std::string("json")}))
      ->type_name("FORMAT")
      ->capture_default_str();
}

/// The words that an operation takes as they are: "auto" of "auto | KHZ [BITRATE]".
std::vector<std::string> ArgumentWords(const Operation& operation) {
  std::vector<std::string> words;
  std::istringstream alternatives(operation.arguments);
  for (std::string word; std::getline(alternatives, word, '|');) {
    std::erase(word, ' ');
    const bool is_word = word.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
    if (is_word && !word.empty()) words.push_back(word);
  }
  return words;
}

KnownWords WordsToComplete() {
  KnownWords words;
  for (const auto& receiver : Models()) words["--model"].push_back(receiver->GetName().ToUtf8());
  words["NAME"] = words["--model"];
  words["MODEL"] = words["--model"];
  for (const Operation& operation : Operations()) {
    words["OPERATION"].push_back(operation.name);
    for (const std::string& word : ArgumentWords(operation))
      words[std::string("ARGUMENT ") + operation.name].push_back(word);
  }
  return words;
}

}  // namespace

std::string VersionText() {
  return GPSENGINE_VERSION "\n" + Projection::Version();
}

void AddModels(CLI::App& app, Job& job) {
  struct Options {
    std::string name;
    std::string format = "table";
  };
  auto* command =
      app.add_subcommand("models", "List the receiver models, their baud rates and what each can do");
  command->footer(
      "Examples:\n"
      "  gpsengine models\n"
      "  gpsengine models Trimble                              what may be asked of it, by \"command\"\n"
      "  gpsengine models --format json");
  auto options = std::make_shared<Options>();
  command->add_option("name", options->name, "One model, to list its operations")
      ->transform(AModel())
      ->type_name("NAME");
  command->add_option("--format", options->format, "table or json")
      ->check(CLI::IsMember({"table", "json"}))
      ->type_name("FORMAT")
      ->capture_default_str();
  command->callback([&job, options] {
    job = [options](const Interrupt&, Output& output) {
      const bool json = options->format == "json";
      if (options->name.empty()) {
        output.Text() += json ? ModelsAsJson() : ModelsAsTable();
      } else {
        CGPSReceiver& receiver = FindModel(options->name);
        output.Text() += json ? ModelAsJson(receiver) : ModelAsText(receiver);
      }
      output.Flush();
      return ExitCode::done;
    };
  });
}

void AddPorts(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("ports", "List the serial ports, and whether each can be opened");
  command->footer(
      "Examples:\n"
      "  gpsengine ports\n"
      "  gpsengine ports --format json\n"
      "\"gpsengine monitor --port auto\" looks for a receiver on them.");
  auto format = std::make_shared<std::string>();
  AddListFormat(*command, *format, "table");
  command->callback([&job, format] {
    job = [format](const Interrupt&, Output& output) {
      const auto ports = FindPorts();
      output.Text() += *format == "json" ? PortsAsJson(ports) : PortsAsTable(ports);
      output.Flush();
      return ExitCode::done;
    };
  });
}

void AddConfig(CLI::App& app, Job& job) {
  struct Options {
    std::string format, name, value;
  };
  auto* command = app.add_subcommand("config", "Show what is remembered: port, model and baud rates");
  command->footer(
      "A run that understood a receiver has its port and model remembered, for --port last.\n"
      "Examples:\n"
      "  gpsengine config set port /dev/ttyUSB0\n"
      "  gpsengine config set model Trimble\n"
      "  gpsengine config forget Trimble                       its baud rate\n"
      "  gpsengine config reset");
  auto options = std::make_shared<Options>();
  AddListFormat(*command, options->format, "text");
  auto* set = command->add_subcommand("set", "Set the port or the model");
  set->add_option("name", options->name, "port or model")
      ->required()
      ->check(CLI::IsMember({"port", "model"}))
      ->type_name("NAME");
  set->add_option("value", options->value, "What it shall be")->required()->type_name("VALUE");
  auto* forget = command->add_subcommand("forget", "Forget the baud rate of a model");
  forget->add_option("model", options->value, "The model")
      ->required()
      ->transform(AModel())
      ->type_name("MODEL");
  auto* reset = command->add_subcommand("reset", "Forget port, model and baud rates");
  for (auto* change : {set, forget, reset}) change->fallthrough();
  command->callback([&job, options, set, forget, reset] {
    job = [options, set = set->parsed(), forget = forget->parsed(), reset = reset->parsed()](const Interrupt&,
                                                                                             Output& output) {
      if (forget) ForgetRate(options->value);
      if (set) SetConfig(options->name, options->value);
      if (reset) ResetConfig();
      const Config config = ReadConfig();
      output.Text() += options->format == "json" ? ConfigAsJson(config) : ConfigAsText(config);
      output.Flush();
      return ExitCode::done;
    };
  });
}

void AddSimulate(CLI::App& app, Job& job) {
  auto* command =
      app.add_subcommand("simulate", "Run a simulated receiver on a pseudo-terminal, and print its name");
  command->footer("Example:\n  gpsengine simulate --model CSI");
  auto options = std::make_shared<SimulateOptions>();
  simulator::Options& receiver = options->receiver;
  command->add_option("--model", receiver.model, "Receiver model, as \"gpsengine models\" lists them")
      ->transform(AModel())
      ->capture_default_str();
  command->add_flag("--quiet", options->quiet, "Do not tell of lines that the receiver does not know");
  command->add_flag("--silent", receiver.silent, "Send nothing at all, as a receiver that is broken");
  command->add_flag("--gga-only", receiver.gga_only, "Begin with positions alone");
  command->add_flag("!--still", receiver.moving, "Stay at one place");
  command->add_option("--rate", receiver.rate_hz, "Epochs a second")
      ->check(AboveZeroUpTo(kFastest))
      ->type_name("HZ")
      ->capture_default_str();
  command->add_option("--duration", options->duration, "End after so many seconds")
      ->check(AboveZero())
      ->type_name("S");
  command->callback([&job, options] {
    job = [options](const Interrupt& interrupt, Output& output) {
      options->receiver.start_utc =
          std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
      return Simulate(*options, interrupt, output);
    };
  });
}

void AddReceiversDoc(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("receivers-doc", "Print docs/receivers.md")->group("");
  command->callback([&job] {
    job = [](const Interrupt&, Output& output) {
      AfxGetApp()->SetProfilePath("");  // the rates of the models, not those that this user has kept
      output.Text() += ReceiversDoc();
      output.Flush();
      return ExitCode::done;
    };
  });
}

/// What the program says of itself, some of which is installed beside it.
void AddDocuments(CLI::App& app, Job& job) {
  const auto add = [&](CLI::App& parent, const char* name, const char* what, auto print) {
    auto* command = parent.add_subcommand(name, what);
    command->callback([&job, print] {
      job = [print](const Interrupt&, Output& output) {
        output.Text() += print();
        output.Flush();
        return ExitCode::done;
      };
    });
    return command;
  };
  add(app, "man", "Print the manual page", [&app] { return ManualPage(app, GPSENGINE_VERSION); });
  auto* completion = app.add_subcommand("completion", "Print a script that completes commands in a shell");
  completion->require_subcommand(1);
  add(*completion, "bash", "For bash", [&app] { return BashCompletion(app, WordsToComplete()); });
  add(*completion, "zsh", "For zsh", [&app] { return ZshCompletion(app, WordsToComplete()); });
  add(app, "version", "Print the version", [] { return VersionText() + '\n'; })->group("");
  auto topic = std::make_shared<std::string>();
  auto* help = add(app, "help", "Print what a command takes", [&app, topic] {
    const auto print = [](const CLI::App& command, const std::string& name) {
      return command.get_formatter()->make_help(&command, name, CLI::AppFormatMode::Normal);
    };
    if (topic->empty()) return print(app, app.get_name());
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
      if (command->get_name() == *topic) return print(*command, app.get_name() + ' ' + *topic);
    }
    throw Failure(ExitCode::usage, "no command is called \"" + *topic + "\"; gpsengine --help lists them");
  });
  help->group("")->add_option("command", *topic, "The command");
}

}  // namespace host
