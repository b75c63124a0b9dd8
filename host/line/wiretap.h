#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "gpsengine/engine/gpsengine.h"
#include "host/run/descriptor.h"

namespace host {

/// A copy of the bytes that a run reads, by way of the engine's recording.
class WireTap {
 public:
  /// To be made before the engine starts, on an engine that records nothing else.
  explicit WireTap(CGPSEngine& engine);

  /// The bytes since the last call.
  std::string Take();
  /// Forgets what has come so far. For a copy that the engine does not add to, but will again.
  void Restart();
  /// Some byte has come.
  bool HasHeard() const;

 private:
  UniqueDescriptor file_;
  off_t taken_ = 0;
};

/// Finds the lines of a parameter report, "PMD:", "PER:", "PEM:" and "PRTA:". They have no "$", so that the
/// framing of messages passes over them: a host that has asked for them hands them to CGPSReceiver::Parse by
/// itself.
class ParameterLines {
 public:
  /// The next bytes of the stream, in pieces of any size.
  void Feed(std::string_view bytes);
  /// The lines so far, without their ends.
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::string line_;  // not yet ended
  std::vector<std::string> lines_;
};

}  // namespace host
