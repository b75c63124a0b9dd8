#pragma once

#include <memory>

#include "host/line/observer.h"
#include "host/session/feed.h"
#include "simulator/simulator.h"

namespace host {

/// A serial line: to a device, or to a simulated receiver on a pseudo-terminal.
class LineFeed : public Feed {
 public:
  /// `device` empty asks for a simulated receiver of that model.
  LineFeed(const std::string& device, const std::string& model);

  std::string Description(int baud) const override;
  void Announce(const std::string& model) const override;
  void Open(CGPSEngine& engine, HostWindow& window) override;
  std::string TakeBytes() override { return observer_.Take(); }
  int Descriptor() const override { return observer_.Descriptor(); }
  std::size_t Write(std::string_view bytes) const override { return observer_.Write(bytes); }
  bool IsLost() const override { return observer_.IsLost(); }
  const std::string& StablePath() const override { return path_; }

 private:
  using Simulation = std::unique_ptr<simulator::PtyRunner>;

  LineFeed(const std::string& device, Simulation simulation);

  const Simulation simulation_;
  bool simulates_ = false;
  std::string path_;  // by which the device is found again, once it has been there
  LineObserver observer_;
};

}  // namespace host
