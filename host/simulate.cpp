#include "host/simulate.h"

#include "host/run/waiter.h"

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
  PortWatch nothing("");
  Waiter waiter(interrupt, output, nothing);
  while (!end.HasPassed() && !waiter.IsReaderGone()) {
    waiter.Wait(end.Earlier(Deadline::Clock::time_point::max()));
    if (interrupt.HasCome()) return ExitCode::interrupted;
  }
  return ExitCode::done;
}

}  // namespace host
