#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/corrections/link.h"
#include "host/session/rawoutput.h"
#include "host/session/session.h"
#include "host/shown.h"

namespace host {

/// What the user says of a run that follows a receiver, or plays a recording as if it were one. With a RINEX
/// log, the receiver is told to send raw data.
struct LiveOptions : RunOptions, ShownOptions {
  double speed = 1.0;              ///< Of a recording, by its own times; 0 for the engine's own playback.
  std::optional<bool> attach_raw;  ///< Decode raw data; without it, where the model has them.
  bool explain = false;  ///< Show what the receiver would be sent for a RINEX log, and send nothing.
  CorrectionOptions corrections;
};

/// Where such a run gets its bytes from. `tells_bytes`: those of a recording are wanted too.
std::unique_ptr<Feed> MakeLiveFeed(const LiveOptions& options, const std::string& model, bool tells_bytes);

/// Shows what a RINEX log sends to the receiver.
ExitCode ExplainRawData(const LiveOptions& options, Output& output);

/// The raw data of such a run, if a RINEX log wants them.
class LiveRawData {
 public:
  /// Adds itself to the session, whose feed is known and whose outlets that show something come after.
  /// Throws a Failure if the model cannot do that.
  LiveRawData(Session& session, const LiveOptions& options);
  /// What it asks of the run. It outlives the run.
  void Rule(RunRules& rules);

 private:
  const std::optional<bool> attach_;
  std::optional<RawOutput> output_;  // of a live receiver
};

/// Has a recording at its own pace end by its own time, and not by the clock.
template <class Options>
Options ByItsOwnTime(Options options) {
  if (!options.play.empty() && options.speed > 0.0) {
    options.exports.filter.duration = std::exchange(options.duration, 0.0);
  }
  return options;
}

}  // namespace host
