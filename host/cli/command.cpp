#include "host/command.h"
#include "host/cli/commands.h"
#include "host/cli/options.h"

namespace host {

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
  AddLine(*command, *options, "Serial device");
  AddModel(*command, options->model);
  command->add_option("operation", options->operation, "What to do")->required()->type_name("OPERATION");
  command->add_option("arguments", options->arguments.words, "What the operation takes")
      ->type_name("ARGUMENT");
  command->add_flag("--wait", options->arguments.wait, "With reset: wait for the acknowledgement");
  AddValue(*command, "--listen", options->listen, "SECONDS", Between(0.0),
           "Seconds to show reports for; without it, until a query is answered");
  command->add_flag("--force", options->force, "Even if the model does not offer the operation");
  auto* dry_run = command->add_flag("--dry-run", options->dry_run, "Print the steps and take none");
  command->add_flag("--closed", options->closed, "With --dry-run: the port is closed and does not open")
      ->needs(dry_run);
  command->callback([&job, options, command] {
    job = options->dry_run ? JobOf(options, &Command) : OnLine(*command, options, &Command);
  });
}

}  // namespace host
