#include "host/cli/commandline.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <map>

#include "gpsengine/platform/application.h"
#include "host/cli/exportcommandline.h"
#include "host/cli/listcommandline.h"
#include "host/cli/values.h"
#include "host/command.h"
#include "host/decode.h"
#include "host/line/portsearch.h"
#include "host/monitor.h"
#include "host/run/failure.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"
#include "host/serve.h"
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

void AddRinexOptions(CLI::App& command, RinexOptions& options) {
  auto* rinex =
      command.add_option("--rinex", options.base, "Log raw data to BASE.obs and BASE.nav, as RINEX 2.11")
          ->check(AName())
          ->type_name("BASE");
  command.add_option("--interval", options.interval, "Seconds between the epochs that are logged")
      ->check(Between(0.1, 86400.0))
      ->type_name("S")
      ->needs(rinex);
}

void AddModelOption(CLI::App& command, RunOptions& options) {
  command.add_option("--model", options.model, "Receiver model, as \"gpsengine models\" lists them")
      ->transform(AModel())
      ->capture_default_str();
}

void AddReceiverOptions(CLI::App& command, RunOptions& options) {
  AddModelOption(command, options);
  command.add_option("--antenna-height", options.antenna_height, "Metres to take off every height")
      ->check(AnyNumber())
      ->type_name("M");
  AddChoice(command, "--geoid", options.geoid, kGeoids, "What to do with the geoid separation");
}

/// --port and --baud, whose words ChooseLine looks up. Gives the option --port.
CLI::Option* AddLineOptions(CLI::App& command, RunOptions& options, const std::string& description) {
  auto* port =
      command
          .add_option("--port", options.port,
                      description + "; auto: look for a receiver; last: the port and model of the last run")
          ->check(AName())
          ->type_name("DEVICE");
  command
      .add_option_function<std::string>(
          "--baud", [&options](const std::string& baud) { options.baud = BaudOf(baud); },
          "Baud rate, which is kept for the model once something is understood; auto: try the common ones")
      ->type_name("N")
      ->needs(port);
  return port;
}

/// Where a run that follows a receiver gets its bytes from, and keeps them.
void AddLiveOptions(CLI::App& command, LiveOptions& options) {
  auto* port = AddLineOptions(command, options, "Serial device; without one, a simulated receiver");
  command.add_option("--play", options.play, "Play a recording instead, once and in real time")
      ->check(AName())
      ->type_name("FILE")
      ->excludes(port);
  command
      .add_flag_callback(
          "--reconnect", [&options] { options.reconnect = std::chrono::seconds(1); },
          "Wait for a port that is lost, or is not there yet, instead of ending")
      ->needs(port);
  AddSpeedOption(command, options.speed);
  AddReceiverOptions(command, options);
  command.add_option("--record", options.record, "Record the port's bytes")
      ->check(AName())
      ->type_name("FILE")
      ->excludes("--play");
}

void AddDuration(CLI::App& command, double& seconds, const std::string& description) {
  command.add_option("--duration", seconds, description)->check(AboveZero())->type_name("S");
}

/// What is shown of a run's records, and written beside that.
void AddShownOptions(CLI::App& command, RunOptions& run, ShownOptions& shown,
                     const std::map<std::string, Format>& formats, const std::string& description) {
  AddChoice(command, "--format", shown.format, formats, description);
  AddRinexOptions(command, shown.rinex);
  AddExportOptions(command, shown.exports);
  AddDisplayOptions(command, shown.display);
  command.add_option("--count", run.count, "End after so many records were shown")
      ->check(WholeAboveZero())
      ->type_name("N");
}

template <class Options>
Job JobOf(std::shared_ptr<Options> options, ExitCode (*perform)(const Options&, const Interrupt&, Output&)) {
  return [=](const Interrupt& interrupt, Output& output) { return perform(*options, interrupt, output); };
}

/// The same on a line, which is looked for first if it has to be.
template <class Options>
Job OnLine(CLI::App& command, std::shared_ptr<Options> options,
           ExitCode (*perform)(const Options&, const Interrupt&, Output&)) {
  return [=, model = command.get_option("--model")](const Interrupt& interrupt, Output& output) {
    LineChoice& line = *options;
    line = ChooseLine(line, model->count() > 0, interrupt);
    return perform(*options, interrupt, output);
  };
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
      "  gpsengine monitor --port auto --crs EPSG:25832        a point: s shows its survey\n"
      "On a terminal it is a screen: q quits, ? lists the keys, c commands the receiver.");
  auto options = std::make_shared<MonitorOptions>();
  AddLiveOptions(*command, *options);
  AddShownOptions(*command, *options, *options, kLiveFormats,
                  "How to show records; without it, tui on a terminal and text elsewhere");
  command->add_flag_function(
      "--attach-raw,!--no-attach-raw", [options](std::int64_t sign) { options->attach_raw = sign > 0; },
      "Decode raw data; on where the model has them, and in a recording");
  AddDuration(*command, options->duration, "End after so many seconds");
  command->add_option("--timeout", options->timeout, "Seconds to wait for a first message, 0 for ever")
      ->check(ZeroOrMore())
      ->type_name("S")
      ->capture_default_str();
  command->callback([&job, options, command] {
    const bool chosen = command->get_option("--format")->count() > 0;
    if (!chosen && Terminal::Obstacle().empty()) options->format = Format::tui;
    job = OnLine(*command, options, &Monitor);
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
      "  gpsengine serve --play drive.log --speed engine       over and over, for trying a client\n"
      "  gpsengine serve --port auto --record drive.log --gpx drive.gpx\n"
      "  gpsengine serve --geoid add                           then: gpxlogger 127.0.0.1:2947");
  auto options = std::make_shared<ServeOptions>();
  AddLiveOptions(*command, *options);
  AddExportOptions(*command, options->exports);
  command->add_option("--listen", options->listen, "Address to listen on")
      ->type_name("ADDRESS")
      ->capture_default_str();
  command->add_option("--tcp", options->tcp, "Port of gpsd's protocol, 0 for any that is free")
      ->check(WholeBetween(0, 65535))
      ->type_name("PORT")
      ->capture_default_str();
  command
      ->add_option("--http", options->http,
                   "Port of the live page, 0 for any that is free; without it, no page")
      ->check(WholeBetween(0, 65535))
      ->type_name("PORT");
  AddDuration(*command, options->duration, "End after so many seconds");
  command->callback([&job, options, command] { job = OnLine(*command, options, &Serve); });
}

void AddDecode(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("decode", "Decode a recording, as fast as it goes");
  command->footer(
      "Examples:\n"
      "  gpsengine decode drive.log --format json > drive.json\n"
      "  gpsengine decode drive.log --gpx drive.gpx --report drive.html\n"
      "  gpsengine decode monday.log tuesday.log.gz --format none --report survey.html\n"
      "  gpsengine decode drive.log --only fix --min-distance 10 --csv drive.csv");
  auto options = std::make_shared<DecodeOptions>();
  command
      ->add_option("file", options->files,
                   "Recordings, one behind the other, which may be packed by gzip; - for standard input")
      ->check(AName())
      ->required()
      ->type_name("FILE");
  AddReceiverOptions(*command, *options);
  AddShownOptions(*command, *options, *options, kFormats, "How to show records; none: the summary alone");
  AddDuration(*command, options->exports.filter.duration,
              "End after so many seconds of the recording's own time");
  command
      ->add_option_function<std::string>(
          "--date", [options](const std::string& date) { options->date = MomentOfDate(date); },
          "When the recording was made, YYYY-MM-DD, if it does not say so itself")
      ->type_name("DATE");
  command->add_option("--chunk", options->chunk, "Bytes to take in at a time")
      ->check(WholeBetween(1, 1 << 24))
      ->type_name("BYTES")
      ->capture_default_str();
  command->callback([&job, options] { job = JobOf(options, &Decode); });
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
  AddModelOption(*command, *options);
  command->add_option("operation", options->operation, "What to do")->required()->type_name("OPERATION");
  command->add_option("arguments", options->arguments.words, "What the operation takes")
      ->type_name("ARGUMENT");
  command->add_flag("--wait", options->arguments.wait, "With reset: wait for the acknowledgement");
  command
      ->add_option("--listen", options->listen,
                   "Seconds to show reports for; without it, until a query is answered")
      ->check(ZeroOrMore())
      ->type_name("SECONDS");
  command->add_flag("--force", options->force, "Even if the model does not offer the operation");
  auto* dry_run = command->add_flag("--dry-run", options->dry_run, "Print the steps and take none");
  command->add_flag("--closed", options->closed, "With --dry-run: the port is closed and does not open")
      ->needs(dry_run);
  command->callback([&job, options, command] {
    job = options->dry_run ? JobOf(options, &Command) : OnLine(*command, options, &Command);
  });
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
  app.set_version_flag("-v,--version", VersionText());
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
    return TellParseError(app, error);
  } catch (const Failure& failure) {
    Complain(failure.what());
    return static_cast<int>(failure.Code());
  } catch (const std::exception& error) {
    Complain(error.what());
    return static_cast<int>(ExitCode::failed);
  }
}

}  // namespace host
