#pragma once

#include "host/live.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"

namespace host {

struct MonitorOptions : LiveOptions {
  double timeout = 10.0;  ///< Seconds to wait for a first message that is understood; 0 for no limit.
};

/// Shows what a receiver sends until enough was shown, the time is over, the user ends it or nobody reads the
/// output any more. Throws a Failure if the run cannot begin or comes to nothing.
ExitCode Monitor(const MonitorOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
