#pragma once

#include "host/run/failure.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"
#include "simulator/simulator.h"

namespace host {

struct SimulateOptions {
  simulator::Options receiver;
  bool quiet = false;     ///< No complaints about lines that the receiver does not know.
  double duration = 0.0;  ///< Seconds to run; 0 for no limit.
};

/// Runs a simulated receiver on a pseudo-terminal, whose name is the one line of output, until the user ends
/// it, the time is over or nobody reads the output any more. Complaints of the receiver go to standard error.
ExitCode Simulate(const SimulateOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
