#include <chrono>

#include "host/cli/commands.h"
#include "host/cli/options.h"
#include "host/run/deadline.h"
#include "simulator/simulator.h"

namespace host {

namespace {

// Epochs a second, of a simulated receiver.
constexpr double kFastest = 20.0;

struct SimulateOptions {
  simulator::Options receiver;
  bool quiet = false;     ///< No complaints about lines that the receiver does not know.
  double duration = 0.0;  ///< Seconds to run; 0 for no limit.
};

/// Runs a simulated receiver on a pseudo-terminal, whose name is the one line of output, until the user ends
/// it, the time is over or nobody reads the output any more. Complaints of the receiver go to standard error.
ExitCode Simulate(const SimulateOptions& options, const Interrupt& interrupt, Output& output) {
  simulator::PtyRunner::Settings settings;
  settings.on_complaint = [quiet = options.quiet](const std::string& complaint) {
    if (!quiet) Complain(complaint);
  };
  std::unique_ptr<simulator::Receiver> receiver;
  try {
    receiver = simulator::MakeReceiver(options.receiver);
  } catch (const std::invalid_argument& error) {
    throw Failure(ExitCode::usage, error.what());
  }
  simulator::PtyRunner runner(std::move(receiver), settings);
  runner.Start();
  output.Text() += runner.PortName() + '\n';
  output.Flush();
  Deadline end;
  if (options.duration > 0.0) end.Set(options.duration);
  bool is_read = true;
  while (!end.HasPassed() && is_read) {
    std::vector<pollfd> waits = {{interrupt.Descriptor(), POLLIN, 0}, {output.Descriptor(), 0, 0}};
    WaitFor(waits, end.Earlier(Deadline::kNever));
    if (waits[0].revents != 0) return ExitCode::interrupted;
    is_read = (waits[1].revents & (POLLERR | POLLHUP)) == 0;
  }
  return ExitCode::done;
}

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
  AddValue(*command, "--rate", receiver.rate_hz, "HZ", Between(kAboveZero, kFastest), "Epochs a second")
      ->capture_default_str();
  AddDuration(*command, options->duration, "End after this many seconds");
  command->callback([&job, options] {
    options->receiver.start_utc = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    job = JobOf(options, &Simulate);
  });
}

}  // namespace host
