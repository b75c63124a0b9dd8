#include "host/simulate.h"

#include "host/run/deadline.h"

namespace host {

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

}  // namespace host
