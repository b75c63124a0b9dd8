#pragma once

#include "simulator/core.h"

namespace simulator {

/// A receiver with a differential beacon receiver built in, which has its two sentences in every language.
class BeaconCore : public Core {
 protected:
  /// The talker's two letters begin its reports.
  BeaconCore(const Options& options, int baud, const char* talker) : Core(options, baud), talker_(talker) {}

  /// "$GPMSK,frequency in kHz,mode,bit rate,mode,interval", each mode A for automatic or M for as given.
  bool TuneBeacon(const Fields& fields);

  /// Answers a query whose last field is MSS, how the beacon comes in, or MSK, how the receiver is tuned.
  bool ReportBeacon(const Fields& fields);

  bool HearsBeacon() const;

 private:
  std::string SignalReport() const;
  std::string TuningReport() const;
  double Frequency() const;
  int BitRate() const;

  const char* const talker_;
};

}  // namespace simulator
