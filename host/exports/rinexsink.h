#pragma once

#include <string>
#include <vector>

#include "host/exports/rinexlog.h"
#include "host/session/outlet.h"

namespace host {

struct RinexOptions {
  std::string base;       ///< What the files are named after; empty for no log.
  double interval = 0.0;  ///< Seconds between the epochs that are logged; 0 for all of them.
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
  void Write(const rawdata::ObservationEpoch& epoch);
  void WriteWaiting();

  const std::string model_;
  RinexLog log_;
  CGPSDataRaw place_;  // where the receiver is, as far as it has said so
  // Ephemerides of a ten-bit week that no epoch has made whole yet.
  std::vector<CGPSDataEphemeris> waiting_;
};

}  // namespace host
