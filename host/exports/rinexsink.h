#pragma once

#include <string>

#include "host/exports/rinexlog.h"
#include "host/records/sink.h"

namespace host {

struct RinexOptions {
  std::string base;       ///< What the files are named after; empty for no log.
  double interval = 0.0;  ///< Seconds between the epochs that are logged; 0 for all of them.
};

/// Logs raw data on their way to another sink.
class RinexSink : public Sink {
 public:
  /// `inner` outlives the sink. Throws a Failure if the log cannot be opened.
  RinexSink(const RinexOptions& options, const std::string& model, double antenna_height, Sink& inner);

  bool OnData(const CGPSData& data) override { return inner_.OnData(data); }
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin() override { return inner_.OnBin(); }
  bool OnString(const CString& text) override { return inner_.OnString(text); }
  void SetReference(std::optional<Moment> reference) override;

  /// Throws a Failure if a file could not be written. A sink is called from inside the library, and keeps
  /// that to itself until it is asked.
  void Check();
  /// Closes the log and tells what is in it. False if that is nothing.
  bool Finish();

 private:
  Sink& inner_;
  const std::string model_;
  RinexLog log_;
};

}  // namespace host
