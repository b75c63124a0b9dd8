#include "host/cli/commandline.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <chrono>
#include <functional>
#include <map>
#include <sstream>

#include "gpsengine/platform/application.h"
#include "host/cli/clidoc.h"
#include "host/cli/exportcommandline.h"
#include "host/command.h"
#include "host/commands/models.h"
#include "host/commands/operations.h"
#include "host/commands/receiversdoc.h"
#include "host/decode.h"
#include "host/line/config.h"
#include "host/line/ports.h"
#include "host/line/portsearch.h"
#include "host/monitor.h"
#include "host/run/failure.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"
#include "host/serve.h"
#include "host/simulate.h"
#include "host/tui/terminal.h"

namespace host {

namespace {

const std::map<std::string, Geoid> kGeoids = {
    {"none", Geoid::none}, {"add", Geoid::add}, {"subtract", Geoid::subtract}};
const std::map<std::string, Format> kLiveFormats = {
    {"tui", Format::tui}, {"text", Format::text}, {"json", Format::json}, {"record", Format::record}};
const std::map<std::string, Format> kFormats = {
    {"text", Format::text}, {"json", Format::json}, {"record", Format::record}, {"none", Format::none}};

/// An option that takes one of some names.
template <class T>
void AddChoice(CLI::App& command, const std::string& name, T& value, const std::map<std::string, T>& choices,
               const std::string& description) {
  std::vector<std::string> names;
  for (const auto& choice : choices) names.push_back(choice.first);
  command
      .add_option_function<std::string>(
          name, [&value, &choices](const std::string& word) { value = choices.at(word); }, description)
      ->check(CLI::IsMember(names))
      ->type_name("CHOICE");
}

/// What a command does once the command line is understood.
using Job = std::function<ExitCode(const Interrupt&, Output&)>;

void AddRinexOptions(CLI::App& command, RinexOptions& options) {
  auto* rinex =
      command.add_option("--rinex", options.base, "Log raw data to BASE.obs and BASE.nav, as RINEX 2.11")
          ->type_name("BASE");
  command.add_option("--interval", options.interval, "Seconds between the epochs that are logged")
      ->check(CLI::Range(0.1, 86400.0))
      ->type_name("S")
      ->needs(rinex);
}

template <class Options>
void AddReceiverOptions(CLI::App& command, Options& options) {
  command.add_option("--model", options.model, "Receiver model, as \"gpsengine models\" lists them")
      ->capture_default_str();
  command.add_option("--antenna-height", options.antenna_height, "Metres to take off every height")
      ->type_name("M");
  AddChoice(command, "--geoid", options.geoid, kGeoids, "What to do with the geoid separation");
}

int BaudOf(const std::string& text) {
  if (text == "auto") return kAutoBaud;
  int baud = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), baud);
  if (error == std::errc() && end == text.data() + text.size() && baud > 0) return baud;
  throw CLI::ValidationError("--baud", text + " is no baud rate such as 9600, nor auto");
}

/// --port and --baud, whose words ChooseLine looks up. Gives the option --port.
template <class Options>
CLI::Option* AddLineOptions(CLI::App& command, Options& options, const std::string& description) {
  auto* port =
      command
          .add_option("--port", options.port,
                      description + "; auto: look for a receiver; last: the port and model of the last run")
          ->type_name("DEVICE");
  command
      .add_option_function<std::string>(
          "--baud", [&options](const std::string& baud) { options.baud = BaudOf(baud); },
          "Baud rate, which is kept for the model; auto: try the common ones")
      ->type_name("N")
      ->needs(port);
  return port;
}

template <class Options>
void AddReconnect(CLI::App& command, Options& options, CLI::Option* port) {
  command
      .add_flag_callback(
          "--reconnect", [&options] { options.reconnect = std::chrono::seconds(1); },
          "When the port is lost, wait for it to come back instead of ending")
      ->needs(port);
}

Moment MomentOfDate(const std::string& date) {
  int year = 0, month = 0, day = 0;
  char dash1 = 0, dash2 = 0;
  std::istringstream text(date);
  text >> year >> dash1 >> std::noskipws >> month >> dash2 >> day;
  const auto ymd = std::chrono::year(year) / month / day;
  if (!text || !text.eof() || dash1 != '-' || dash2 != '-' || month < 0 || day < 0 || !ymd.ok()) {
    throw CLI::ValidationError("--date", date + " is no date such as 2024-05-14");
  }
  return std::chrono::sys_days(ymd).time_since_epoch().count() * kDay + kDay / 2;
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
  command->add_option("name", options->name, "One model, to list its operations")->type_name("NAME");
  command->add_option("--format", options->format, "table or json")
      ->check(CLI::IsMember({"table", "json"}))
      ->type_name("FORMAT")
      ->capture_default_str();
  command->callback([&job, options] {
    job = [options](const Interrupt&, Output& output) {
      CGPSEngine engine;
      const bool json = options->format == "json";
      if (options->name.empty()) {
        output.Text() += json ? ModelsAsJson(engine) : ModelsAsTable(engine);
      } else {
        CGPSReceiver& receiver = SelectModel(engine, options->name);
        output.Text() += json ? ModelAsJson(receiver) : ModelAsText(receiver);
      }
      output.Flush();
      return ExitCode::done;
    };
  });
}

void AddMonitor(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("monitor", "Show what a receiver sends, live");
  command->footer(
      "Examples:\n"
      "  gpsengine monitor                                     a simulated receiver\n"
      "  gpsengine monitor --port auto                         a receiver on any port, at any usual rate\n"
      "  gpsengine monitor --port last --format json           the one of the last run\n"
      "  gpsengine monitor --port /dev/ttyUSB0 --reconnect     goes on when it is plugged in again\n"
      "  gpsengine monitor --port /dev/ttyUSB0 --model Trimble --baud 9600\n"
      "  gpsengine monitor --play drive.log --format json --count 20\n"
      "  gpsengine monitor --play drive.log --speed 10         ten times as fast as it was\n"
      "  gpsengine monitor --port /dev/ttyUSB0 --gpx walk.gpx --min-distance 2\n"
      "On a terminal it is a screen: q quits, ? lists the keys, c commands the receiver.");
  auto options = std::make_shared<MonitorOptions>();
  auto* port = AddLineOptions(*command, *options, "Serial device; without one, a simulated receiver");
  command->add_option("--play", options->play, "Play a recording, a line every half second, over and over")
      ->type_name("FILE")
      ->excludes(port);
  AddSpeedOption(*command, options->speed);
  AddReceiverOptions(*command, *options);
  AddChoice(*command, "--format", options->format, kLiveFormats,
            "How to show records; without it, tui on a terminal and text elsewhere");
  command->add_option("--record", options->record, "Record the port's bytes")
      ->type_name("FILE")
      ->excludes("--play");
  command->add_flag_function(
      "--attach-raw,!--no-attach-raw", [options](std::int64_t sign) { options->attach_raw = sign > 0; },
      "Decode raw data; on where the model has them, and with --speed");
  AddRinexOptions(*command, options->rinex);
  AddExportOptions(*command, options->exports);
  AddDisplayOptions(*command, options->display);
  command->add_option("--count", options->count, "End after so many records were shown")
      ->check(CLI::PositiveNumber)
      ->type_name("N");
  command->add_option("--duration", options->duration, "End after so many seconds")
      ->check(CLI::PositiveNumber)
      ->type_name("S");
  AddReconnect(*command, *options, port);
  command->add_option("--timeout", options->timeout, "Seconds to wait for a first message, 0 for ever")
      ->check(CLI::NonNegativeNumber)
      ->type_name("S")
      ->capture_default_str();
  command->callback([&job, options, command] {
    const bool chosen = command->get_option("--format")->count() > 0;
    if (!chosen && Terminal::Obstacle().empty()) options->format = Format::tui;
    job = [options, model = command->get_option("--model")](const Interrupt& interrupt, Output& output) {
      ChooseLine(*options, model->count() > 0, interrupt);
      return Monitor(*options, interrupt, output);
    };
  });
}

void AddServe(CLI::App& app, Job& job) {
  auto* command =
      app.add_subcommand("serve", "Serve what a receiver sends to gpsd's clients, and as a live page");
  command->footer(
      "Clients cannot change anything: no request reaches the receiver.\n"
      "Examples:\n"
      "  gpsengine serve --port /dev/ttyUSB0 --model Trimble   then: gpspipe -w, cgps, gpsmon ...\n"
      "  gpsengine serve --port auto --reconnect               goes on when it is plugged in again\n"
      "  gpsengine serve --http 8080                           a simulated receiver, and a page\n"
      "  gpsengine serve --play drive.log --tcp 2950           then: gpspipe -r 127.0.0.1:2950\n"
      "  gpsengine serve --geoid add                           then: gpxlogger 127.0.0.1:2947");
  auto options = std::make_shared<ServeOptions>();
  auto* port = AddLineOptions(*command, *options, "Serial device; without one, a simulated receiver");
  command->add_option("--play", options->play, "Play a recording, a line every half second, over and over")
      ->type_name("FILE")
      ->excludes(port);
  AddReceiverOptions(*command, *options);
  command->add_option("--listen", options->listen, "Address to listen on")
      ->type_name("ADDRESS")
      ->capture_default_str();
  command->add_option("--tcp", options->tcp, "Port of gpsd's protocol, 0 for any that is free")
      ->check(CLI::Range(0, 65535))
      ->type_name("PORT")
      ->capture_default_str();
  command
      ->add_option("--http", options->http,
                   "Port of the live page, 0 for any that is free; without it, no page")
      ->check(CLI::Range(0, 65535))
      ->type_name("PORT");
  command->add_option("--duration", options->duration, "End after so many seconds")
      ->check(CLI::PositiveNumber)
      ->type_name("S");
  AddReconnect(*command, *options, port);
  command->callback([&job, options, model = command->get_option("--model")] {
    job = [options, model](const Interrupt& interrupt, Output& output) {
      ChooseLine(*options, model->count() > 0, interrupt);
      return Serve(*options, interrupt, output);
    };
  });
}

void AddDecode(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("decode", "Decode a recording, as fast as it goes");
  command->footer(
      "Examples:\n"
      "  gpsengine decode drive.log --format json > drive.json\n"
      "  gpsengine decode drive.log --gpx drive.gpx --report drive.html\n"
      "  gpsengine decode drive.log --only fix --min-distance 10 --csv drive.csv");
  auto options = std::make_shared<DecodeOptions>();
  command->add_option("file", options->file, "The recording; - for standard input")
      ->required()
      ->type_name("FILE");
  AddReceiverOptions(*command, *options);
  AddChoice(*command, "--format", options->format, kFormats, "How to show records; none: the summary alone");
  AddRinexOptions(*command, options->rinex);
  AddExportOptions(*command, options->exports);
  AddDisplayOptions(*command, options->display);
  command->add_option("--count", options->count, "End after so many records were shown")
      ->check(CLI::PositiveNumber)
      ->type_name("N");
  command
      ->add_option("--duration", options->exports.filter.duration,
                   "End after so many seconds of the recording's own time")
      ->check(CLI::PositiveNumber)
      ->type_name("S");
  command
      ->add_option_function<std::string>(
          "--date", [options](const std::string& date) { options->date = MomentOfDate(date); },
          "When the recording was made, YYYY-MM-DD, if it does not say so itself")
      ->type_name("DATE");
  command->add_option("--chunk", options->chunk, "Bytes to take in at a time")
      ->check(CLI::Range(1, 1 << 24))
      ->type_name("BYTES")
      ->capture_default_str();
  command->callback([&job, options] {
    job = [options](const Interrupt& interrupt, Output& output) {
      return Decode(*options, interrupt, output);
    };
  });
}

void AddCommand(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("command", "Command a receiver, and show the reports that answer");
  command->footer(
      "\"gpsengine models NAME\" lists the operations of a model.\n"
      "Examples:\n"
      "  gpsengine command --port /dev/ttyUSB0 --model CSI gga-only\n"
      "  gpsengine command --port auto --model CSI query-nmea\n"
      "  gpsengine command --port /dev/ttyUSB0 --model \"Sokkia Axis3\" query-dgps --listen 3\n"
      "  gpsengine command --dry-run --model SiRF set-dgps waas");
  auto options = std::make_shared<CommandOptions>();
  AddLineOptions(*command, *options, "Serial device");
  command->add_option("--model", options->model, "Receiver model, as \"gpsengine models\" lists them")
      ->capture_default_str();
  command->add_option("operation", options->operation, "What to do")->required()->type_name("OPERATION");
  command->add_option("arguments", options->arguments.words, "What the operation takes")
      ->type_name("ARGUMENT");
  command->add_flag("--wait", options->arguments.wait, "With reset: wait for the acknowledgement");
  command
      ->add_option("--listen", options->listen,
                   "Seconds to show reports for; without it, until a query is answered")
      ->check(CLI::NonNegativeNumber)
      ->type_name("SECONDS");
  command->add_flag("--force", options->force, "Even if the model does not offer the operation");
  auto* dry_run = command->add_flag("--dry-run", options->dry_run, "Print the steps and take none");
  command->add_flag("--closed", options->closed, "With --dry-run: the port is closed and does not open")
      ->needs(dry_run);
  command->callback([&job, options, model = command->get_option("--model")] {
    job = [options, model](const Interrupt& interrupt, Output& output) {
      if (!options->dry_run) ChooseLine(*options, model->count() > 0, interrupt);
      return Command(*options, interrupt, output);
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
      ->capture_default_str();
  command->add_flag("--quiet", options->quiet, "Do not tell of lines that the receiver does not know");
  command->add_flag("--silent", receiver.silent, "Send nothing at all, as a receiver that is broken");
  command->add_flag("--gga-only", receiver.gga_only, "Begin with positions alone");
  command->add_flag("!--still", receiver.moving, "Stay at one place");
  command->add_option("--rate", receiver.rate_hz, "Epochs a second")->type_name("HZ")->capture_default_str();
  command->add_option("--duration", options->duration, "End after so many seconds")
      ->check(CLI::PositiveNumber)
      ->type_name("S");
  command->callback([&job, options] {
    job = [options](const Interrupt& interrupt, Output& output) {
      options->receiver.start_utc =
          std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
      return Simulate(*options, interrupt, output);
    };
  });
}

/// The format of a list, in a format's own words.
void AddListFormat(CLI::App& command, std::string& format, const std::string& plain) {
  format = plain;
  command.add_option("--format", format, plain + " or json")
      ->check(CLI::IsMember({plain, std::string("json")}))
      ->type_name("FORMAT")
      ->capture_default_str();
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
      "  gpsengine config reset");
  auto options = std::make_shared<Options>();
  AddListFormat(*command, options->format, "text");
  auto* set = command->add_subcommand("set", "Set the port or the model");
  set->add_option("name", options->name, "port or model")
      ->required()
      ->check(CLI::IsMember({"port", "model"}))
      ->type_name("NAME");
  set->add_option("value", options->value, "What it shall be")->required()->type_name("VALUE");
  auto* reset = command->add_subcommand("reset", "Forget port, model and baud rates");
  for (auto* change : {set, reset}) change->fallthrough();
  command->callback([&job, options, set, reset] {
    job = [options, set = set->parsed(), reset = reset->parsed()](const Interrupt&, Output& output) {
      CGPSEngine engine;
      if (set) SetConfig(engine, options->name, options->value);
      if (reset) ResetConfig(engine);
      const Config config = ReadConfig(engine);
      output.Text() += options->format == "json" ? ConfigAsJson(config) : ConfigAsText(config);
      output.Flush();
      return ExitCode::done;
    };
  });
}

void AddReceiversDoc(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("receivers-doc", "Print docs/receivers.md")->group("");
  command->callback([&job] {
    job = [](const Interrupt&, Output& output) {
      const CGPSEngine engine;
      AfxGetApp()->SetProfilePath("");  // the rates of the models, not those that this user has kept
      output.Text() += ReceiversDoc(engine);
      output.Flush();
      return ExitCode::done;
    };
  });
}

KnownWords WordsToComplete() {
  KnownWords words;
  const CGPSEngine engine;
  for (const auto& receiver : engine.GetReceivers()) words["--model"].push_back(receiver->GetName().ToUtf8());
  words["NAME"] = words["--model"];
  for (const Operation& operation : Operations()) words["OPERATION"].push_back(operation.name);
  return words;
}

/// The documents of the program itself, which is asked for them when it is built.
void AddDocuments(CLI::App& app, Job& job) {
  const auto add = [&](CLI::App& parent, const char* name, auto print) {
    auto* command = parent.add_subcommand(name, "Print what is installed beside the program")->group("");
    command->callback([&job, print] {
      job = [print](const Interrupt&, Output& output) {
        output.Text() += print();
        output.Flush();
        return ExitCode::done;
      };
    });
    return command;
  };
  add(app, "man", [&app] { return ManualPage(app, GPSENGINE_VERSION); });
  auto* completion = app.add_subcommand("completion", "Print a completion script")->group("");
  completion->require_subcommand(1);
  add(*completion, "bash", [&app] { return BashCompletion(app, WordsToComplete()); });
  add(*completion, "zsh", [&app] { return ZshCompletion(app, WordsToComplete()); });
}

ExitCode Perform(const Job& job) {
  CWinApp app("gpsengine");
  const Interrupt interrupt;
  Output output(STDOUT_FILENO);
  return job(interrupt, output);
}

}  // namespace

int RunCommandLine(int argc, char** argv) {
  CLI::App app("One interface to nineteen models of GPS receiver", "gpsengine");
  app.set_version_flag("--version", GPSENGINE_VERSION "\n" + Projection::Version());
  app.require_subcommand(1);
  Job job;
  AddModels(app, job);
  AddMonitor(app, job);
  AddServe(app, job);
  AddDecode(app, job);
  AddCommand(app, job);
  AddSimulate(app, job);
  AddPorts(app, job);
  AddConfig(app, job);
  AddReceiversDoc(app, job);
  AddDocuments(app, job);
  try {
    app.parse(argc, argv);
    return static_cast<int>(Perform(job));
  } catch (const CLI::ParseError& error) {
    const auto unknown = app.remaining();
    if (app.get_subcommands().empty() && !unknown.empty() && !unknown.front().starts_with('-')) {
      Complain("no command is called \"" + unknown.front() + "\"; gpsengine --help lists them");
      return static_cast<int>(ExitCode::usage);
    }
    return app.exit(error) == 0 ? 0 : static_cast<int>(ExitCode::usage);
  } catch (const Failure& failure) {
    Complain(failure.what());
    return static_cast<int>(failure.Code());
  } catch (const std::exception& error) {
    Complain(error.what());
    return static_cast<int>(ExitCode::failed);
  }
}

}  // namespace host
