#pragma once

#include <optional>
#include <string>

#include "gpsengine/face/operations.h"
#include "host/run/face.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"
#include "host/session/session.h"

namespace host {

/// The port is needed unless dry_run is set.
struct CommandOptions : RunOptions {
  std::string operation;
  Arguments arguments;
  bool force = false;            ///< Even if the model's capability answers do not open the operation.
  bool dry_run = false;          ///< Print the steps instead of taking them.
  bool closed = false;           ///< In a dry run, the port is closed and does not open.
  std::optional<double> listen;  ///< Seconds to show reports for; without it, until a request is answered.
};

/// Commands a receiver by one operation, on a real engine, and shows the reports that come. Throws a Failure
/// if the operation cannot be had or does not work.
ExitCode Command(const CommandOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
