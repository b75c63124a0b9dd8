#pragma once

#include <memory>
#include <optional>

#include "host/exports/exports.h"
#include "host/exports/rinexsink.h"
#include "host/records/display.h"
#include "host/records/format.h"
#include "host/session/printer.h"
#include "host/session/session.h"

namespace host {

/// How a run's records are shown, and what is written beside that.
struct ShownOptions {
  Format format = Format::text;
  RinexOptions rinex;
  ExportOptions exports;
  Display display;
};

/// The outlets of a run that shows records: lines on the output, exports, RINEX.
class Shown {
 public:
  /// Adds them to the session, whose feed is known. `screen` takes the records in the place of the output.
  Shown(Session& session, const ShownOptions& options, Output& output, Sink* screen = nullptr);

  /// Behind the other outlets: sends the lines on their way.
  void AddPrinter(Session& session) { session.Add(printer_); }

 private:
  const std::unique_ptr<Sink> lines_;  // nothing with a screen
  Exports exports_;
  std::optional<RinexSink> rinex_;
  Printer printer_;
};

}  // namespace host
