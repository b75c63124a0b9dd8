#include "host/session/linefeed.h"

#include <chrono>
#include <utility>

#include "gpsengine/face/port.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

std::unique_ptr<simulator::PtyRunner> Simulate(const std::string& model) {
  simulator::Options options;
  options.model = model;
  options.start_utc = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  simulator::PtyRunner::Settings settings;
  // A rate that the user has saved for a real receiver of this model is not the simulated one's.
  settings.garble_at_wrong_rate = false;
  return std::make_unique<simulator::PtyRunner>(simulator::MakeReceiver(options), settings);
}

}  // namespace

LineFeed::LineFeed(const std::string& port, const std::string& model)
    : LineFeed(port, port.empty() ? Simulate(model) : nullptr) {}

LineFeed::LineFeed(const std::string& port, Simulation simulation)
    : LineFeed(Port::Of(simulation ? simulation->PortName() : port), std::move(simulation)) {}

LineFeed::LineFeed(std::unique_ptr<Port> port, Simulation&& simulation)
    : Feed(simulation ? Kind::simulated : Kind::device, port->IsInput() ? "standard input" : port->Name()),
      simulation_(std::move(simulation)),
      port_(std::move(port)) {}

std::string LineFeed::Description(int baud) const {
  if (simulation_) return Name() + "  simulated";
  return port_->HasRate() ? Name() + "  " + std::to_string(baud) + " baud" : Name();
}

void LineFeed::Announce(const std::string& model) const {
  if (!port_->TakesCommands() && !port_->IsInput())
    Complain("nothing is sent to " + Name() + ": the receiver has to send by itself what is wanted of it");
  if (!simulation_) return;
  Complain("a simulated receiver \"" + model + "\" on " + Name() +
           "; --port DEVICE reads a real one, Ctrl-C ends");
}

void LineFeed::Open(CGPSEngine& engine, HostWindow&) {
  if (simulation_ && !std::exchange(simulates_, true)) simulation_->Start();
  MapComPort(kPort, observer_.Opener([this] { return port_->Open(); }));
  if (engine.Start()) return;
  if (engine.GetLastError() != GPS_ENGINE_INIT_FAILED) {
    throw Failure(ExitCode::failed, engine.GetLastErrorString().ToUtf8());
  }
  const std::string reason = port_->WhyNot();
  throw Failure(ExitCode::port_closed, reason.empty() ? "cannot open " + port_->Name() : reason);
}

void LineFeed::CheckUnderstood(const HostWindow& window) const {
  if (IsAtEnd() && window.GetPublished().All() == 0)
    throw Failure(ExitCode::nothing_understood, "no message of standard input was understood");
}

}  // namespace host
