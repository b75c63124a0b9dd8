#pragma once

#include <optional>
#include <string>

#include "host/exports/exports.h"
#include "host/exports/rinexsink.h"
#include "host/records/format.h"
#include "host/run/failure.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"

namespace host {

struct DecodeOptions {
  std::string file;  ///< "-" for standard input.
  std::string model = "Other";
  Format format = Format::text;
  int chunk = 4096;  ///< Bytes handed to the engine at a time.
  Geoid geoid = Geoid::none;
  double antenna_height = 0.0;  ///< Metres.
  RinexOptions rinex;
  ExportOptions exports;
  long long count = 0;  ///< Records to show; 0 for no limit.
  std::optional<Moment>
      date;  ///< When the recording was made; without it, what the recording itself says of that.
};

/// Decodes every byte of a recording, as fast as it goes. Throws a Failure for an unknown model or an
/// unreadable file.
ExitCode Decode(const DecodeOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
