#include "host/line/ports.h"
#include "host/cli/commands.h"
#include "host/cli/options.h"

namespace host {

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
    job = Prints([format] {
      const auto ports = FindPorts();
      return *format == "json" ? PortsAsJson(ports) : PortsAsTable(ports);
    });
  });
}

}  // namespace host
