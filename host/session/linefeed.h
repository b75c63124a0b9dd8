#pragma once

#include <memory>

#include "host/line/observer.h"
#include "host/session/feed.h"
#include "simulator/simulator.h"

namespace host {

/// A line: to a device, to an address, or to a simulated receiver on a pseudo-terminal.
class LineFeed : public Feed {
 public:
  /// `port` empty asks for a simulated receiver of that model.
  LineFeed(const std::string& port, const std::string& model);

  std::string Description(int baud) const override;
  void Announce(const std::string& model) const override;
  void Open(CGPSEngine& engine, HostWindow& window) override;
  std::string TakeBytes() override { return observer_.Take(); }
  int Descriptor() const override { return observer_.Descriptor(); }
  std::size_t Write(std::string_view bytes) const override { return observer_.Write(bytes); }
  bool IsLost() const override { return observer_.IsLost(); }
  bool IsAtEnd() const override { return port_->IsInput() && IsLost(); }
  void CheckUnderstood(const HostWindow& window) const override;
  Port* GetPort() const override { return port_.get(); }

 private:
  using Simulation = std::unique_ptr<simulator::PtyRunner>;

  LineFeed(const std::string& port, Simulation simulation);
  LineFeed(std::unique_ptr<Port> port, Simulation&& simulation);

  const Simulation simulation_;
  bool simulates_ = false;
  const std::unique_ptr<Port> port_;
  LineObserver observer_;
};

}  // namespace host
