#include <chrono>

#include "host/cli/commands.h"
#include "host/cli/options.h"
#include "host/simulate.h"

namespace host {

namespace {

// Epochs a second, of a simulated receiver.
constexpr double kFastest = 20.0;

}  // namespace

void AddSimulate(CLI::App& app, Job& job) {
  auto* command =
      app.add_subcommand("simulate", "Run a simulated receiver on a pseudo-terminal, and print its name");
  command->footer("Example:\n  gpsengine simulate --model CSI");
  auto options = std::make_shared<SimulateOptions>();
  simulator::Options& receiver = options->receiver;
  AddModel(*command, receiver.model);
  command->add_flag("--quiet", options->quiet, "Do not tell of lines that the receiver does not know");
  command->add_flag("--silent", receiver.silent, "Send nothing at all, as a receiver that is broken");
  command->add_flag("--gga-only", receiver.gga_only, "Begin with positions alone");
  command->add_flag("!--still", receiver.moving, "Stay at one place");
  AddValue(*command, "--rate", receiver.rate_hz, "HZ", AboveZeroUpTo(kFastest), "Epochs a second")
      ->capture_default_str();
  AddDuration(*command, options->duration, "End after so many seconds");
  command->callback([&job, options] {
    options->receiver.start_utc = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    job = JobOf(options, &Simulate);
  });
}

}  // namespace host
