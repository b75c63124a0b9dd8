#include "host/session/linefeed.h"

#include <chrono>
#include <utility>

#include "gpsengine/face/port.h"
#include "host/line/ports.h"
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

LineFeed::LineFeed(const std::string& device, const std::string& model)
    : LineFeed(device, device.empty() ? Simulate(model) : nullptr) {}

LineFeed::LineFeed(const std::string& device, Simulation simulation)
    : Feed(simulation ? Kind::simulated : Kind::device, simulation ? simulation->PortName() : device),
      simulation_(std::move(simulation)),
      path_(Name()) {}

std::string LineFeed::Description(int baud) const {
  return Name() + (simulation_ ? "  simulated" : "  " + std::to_string(baud) + " baud");
}

void LineFeed::Announce(const std::string& model) const {
  if (!simulation_) return;
  Complain("a simulated receiver \"" + model + "\" on " + Name() +
           "; --port DEVICE reads a real one, Ctrl-C ends");
}

void LineFeed::Open(CGPSEngine& engine, HostWindow&) {
  if (simulation_ && !std::exchange(simulates_, true)) simulation_->Start();
  MapComPort(kPort, observer_.Opener(path_));
  if (engine.Start()) {
    path_ = StableName(path_);
    return;
  }
  if (engine.GetLastError() != GPS_ENGINE_INIT_FAILED) {
    throw Failure(ExitCode::failed, engine.GetLastErrorString().ToUtf8());
  }
  const std::string reason = WhyNotOpen(path_);
  throw Failure(ExitCode::port_closed, reason.empty() ? "cannot open " + path_ : reason);
}

}  // namespace host
