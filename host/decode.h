#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/run/interrupt.h"
#include "host/run/output.h"
#include "host/session/session.h"
#include "host/shown.h"

namespace host {

struct DecodeOptions : RunOptions, ShownOptions {
  std::vector<std::string> files;  ///< One after the other; "-" for standard input.
  int chunk = 4096;                ///< Bytes handed to the engine at a time.
  std::optional<Moment> date;      ///< When the recording was made; without it, what it says of that itself.
};

/// Decodes every byte of the recordings, as fast as it goes. Throws a Failure for an unknown model or an
/// unreadable file.
ExitCode Decode(const DecodeOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
