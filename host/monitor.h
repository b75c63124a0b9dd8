#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "host/exports/exports.h"
#include "host/exports/rinexsink.h"
#include "host/records/format.h"
#include "host/run/failure.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"

namespace host {

struct MonitorOptions {
  std::string port;    ///< Device to read; empty for none.
  std::string play;    ///< Recording to play instead; empty for none. With neither, a simulated receiver.
  double speed = 0.0;  ///< Of the playback, by the recording's own times; 0 for the engine's own pace.
  int baud = 0;        ///< Bits a second; 0 for what is set for the model.
  std::string model = "Other";
  Format format = Format::text;
  Geoid geoid = Geoid::none;
  double antenna_height = 0.0;     ///< Metres.
  std::optional<bool> attach_raw;  ///< Decode raw data; without it, where the model has them.
  RinexOptions rinex;              ///< With a log, the receiver is told to send raw data.
  ExportOptions exports;
  std::string record;     ///< File for the port's bytes; empty for none.
  long long count = 0;    ///< Records to show; 0 for no limit.
  double duration = 0.0;  ///< Seconds to run; 0 for no limit.
  /// Wait for a port that is lost to come back, looking for it so often; without it, the run ends.
  std::optional<std::chrono::milliseconds> reconnect;
  double timeout = 10.0;  ///< Seconds to wait for a first message that is understood; 0 for no limit.
};

/// Shows what a receiver sends until enough was shown, the time is over, the user ends it or nobody reads the
/// output any more. Throws a Failure if the run cannot begin or comes to nothing.
ExitCode Monitor(const MonitorOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
