#pragma once

#include <optional>

#include "gpsengine/platform/application.h"

namespace gps {

/// The one use of an engine in a process, with the application that it wants. Receivers share what they have
/// decoded and the port, so that a second one would not stand beside it.
class EngineUse {
 public:
  /// Throws an Error, ErrorCode::busy, while there is another.
  EngineUse();
  ~EngineUse();
  EngineUse(const EngineUse&) = delete;
  EngineUse& operator=(const EngineUse&) = delete;

 private:
  std::optional<CWinApp> app_;  // where the process has none of its own
};

}  // namespace gps
