#include "host/monitor.h"
#include "host/cli/commands.h"
#include "host/cli/options.h"
#include "host/tui/terminal.h"

namespace host {

void AddMonitor(CLI::App& app, Job& job) {
  auto* command = app.add_subcommand("monitor", "Show what a receiver sends, live");
  command->footer(
      "Examples:\n"
      "  gpsengine monitor                                     a simulated receiver\n"
      "  gpsengine monitor --port auto                         a receiver on any port, at any usual rate\n"
      "  gpsengine monitor --port last --format json           the one of the last run\n"
      "  gpsengine monitor --port /dev/ttyUSB0 --reconnect     goes on when it is plugged in again\n"
      "  gpsengine monitor --port /dev/ttyUSB0 --model Trimble --baud 9600\n"
      "  gpsengine monitor --port tcp://gps.example:3001       bytes over the network, see --port\n"
      "  gpsengine monitor --play drive.log --format json --count 20\n"
      "  gpsengine monitor --play drive.log --speed 10         ten times as fast as it was\n"
      "  gpsengine monitor --port /dev/ttyUSB0 --gpx walk.gpx --min-distance 2\n"
      "  gpsengine monitor --port last --rinex rover --interval 1   raw data for post-processing\n"
      "  gpsengine monitor --port auto --crs EPSG:25832        a point: s shows its survey\n"
      "  gpsengine monitor --port auto --corrections ntrip://user@caster.example/MOUNT   DGPS, RTK\n"
      "On a terminal it is a screen: q quits, ? lists the keys, c commands the receiver.");
  auto options = std::make_shared<MonitorOptions>();
  AddLive(*command, *options);
  AddFormat(*command, *options, *options,
            {{"tui", Format::tui},
             {"text", Format::text},
             {"json", Format::json},
             {"record", Format::record},
             {"none", Format::none}},
            "How to show records; none: not at all. Without it, tui on a terminal and text elsewhere");
  AddValue(*command, "--timeout", options->timeout, "S", Between(0.0),
           "Seconds to wait for a first message, 0 for ever")
      ->capture_default_str();
  command->callback([&job, options, command] {
    const bool chosen = command->get_option("--format")->count() > 0;
    if (!chosen && options->port != "-" && Terminal::Obstacle().empty()) options->format = Format::tui;
    job = OnLine(*command, options, &Monitor);
  });
}

}  // namespace host
