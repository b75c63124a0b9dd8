#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/exports/exports.h"
#include "host/exports/rinexsink.h"
#include "host/records/display.h"
#include "host/records/format.h"
#include "host/session/session.h"

namespace host {

/// How a run's records are shown, and what is written beside that.
struct ShownOptions {
  Format format = Format::text;
  RinexOptions rinex;
  ExportOptions exports;
  Display display;
  std::string record;  ///< File for the bytes as they come; empty for none.
};

/// The outlets of a run that shows records: lines on the output, exports, RINEX, the bytes.
class Shown {
 public:
  /// Adds them to the session, whose feed is known. `screen` takes the records in place of the output.
  Shown(Session& session, const ShownOptions& options, Output& output, Sink* screen = nullptr);

 private:
  template <class T, class... Parameters>
  Outlet& Keep(const Parameters&... parameters) {
    return *beside_.emplace_back(std::make_unique<T>(parameters...));
  }

  const std::unique_ptr<Sink> lines_;  // nothing with a screen
  Exports exports_;
  std::vector<std::unique_ptr<Outlet>> beside_;
};

}  // namespace host
