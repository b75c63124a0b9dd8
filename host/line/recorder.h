#pragma once

#include <optional>
#include <string>

#include "host/line/wiretap.h"

namespace host {

/// Records the port's bytes to a file that goes on over several starts of the engine, each of which by itself
/// begins a recording anew.
class Recorder {
 public:
  /// Empties the file. Throws a Failure if it cannot be written.
  explicit Recorder(const std::string& file);
  /// Writes what is left.
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  /// To be called ahead of each start of the engine.
  void Begin(CGPSEngine& engine);
  /// Writes what has come. Throws a Failure if the file cannot be written any further.
  void Take();
  /// Some byte has come.
  bool HasHeard() const { return heard_ || (tap_ && tap_->HasHeard()); }

 private:
  bool Write();

  const std::string path_;
  UniqueDescriptor file_;
  std::optional<WireTap> tap_;
  bool heard_ = false;
};

}  // namespace host
