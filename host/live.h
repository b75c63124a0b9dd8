#pragma once

#include <memory>
#include <string>
#include <utility>

#include "host/corrections/link.h"
#include "host/session/session.h"
#include "host/shown.h"

namespace host {

/// What the user says of a run that follows a receiver, or plays a recording as if it were one.
struct LiveOptions : RunOptions, ShownOptions {
  double speed = 1.0;  ///< Of a recording, by its own times; 0 for the engine's own playback.
  CorrectionOptions corrections;
};

/// Where such a run gets its bytes from. `tells_bytes`: those of a recording are wanted too.
std::unique_ptr<Feed> MakeLiveFeed(const LiveOptions& options, const std::string& model, bool tells_bytes);

/// Has a recording at its own pace end by its own time, and not by the clock.
template <class Options>
Options ByItsOwnTime(Options options) {
  if (!options.play.empty() && options.speed > 0.0) {
    options.exports.filter.duration = std::exchange(options.duration, 0.0);
  }
  return options;
}

}  // namespace host
