#pragma once

#include <optional>

#include "host/live.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"

namespace host {

/// With a RINEX log, the receiver is told to send raw data.
struct MonitorOptions : LiveOptions {
  std::optional<bool> attach_raw;  ///< Decode raw data; without it, where the model has them.
  bool explain = false;   ///< Show what the receiver would be sent for a RINEX log, and send nothing.
  double timeout = 10.0;  ///< Seconds to wait for a first message that is understood; 0 for no limit.
};

/// Shows what a receiver sends until enough was shown, the time is over, the user ends it or nobody reads the
/// output any more. Throws a Failure if the run cannot begin or comes to nothing.
ExitCode Monitor(const MonitorOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
