#pragma once

#include <string>

#include "host/exports/rinexlog.h"
#include "host/session/outlet.h"

namespace host {

struct RinexOptions {
  std::string base;       ///< What the files are named after; empty for no log.
  double interval = 0.0;  ///< Seconds between the epochs that are logged; 0 for all of them.
  RinexVersion version = RinexVersion::v3_04;
  RinexStation station;  ///< What the user says of it: texts alone.
};

/// Logs the raw data of a run.
class RinexSink : public Sink, public Outlet {
 public:
  /// Throws a Failure if the log cannot be opened.
  RinexSink(const RinexOptions& options, const std::string& model, double antenna_height);

  Sink* Records() override { return this; }
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin(const Block& block) override;
  bool OnData(const Record& record) override;
  void SetReference(std::optional<Moment> reference) override { log_.SetPivot(reference); }

  /// Throws a Failure if a file could not be written. A sink is called from inside the library, and keeps
  /// that to itself until it is asked.
  void Step() override;
  /// Closes the log and tells what is in it. False if that is nothing.
  bool Finish() override;

 private:
  const std::string model_;
  RinexLog log_;
};

}  // namespace host
