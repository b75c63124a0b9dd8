#include "host/exports/rinexsink.h"

#include "host/commands/rawdata.h"
#include "host/run/failure.h"

namespace host {

namespace {

// The least interval that a log takes. No receiver sends raw epochs that fast.
constexpr double kEveryEpoch = 0.1;

}  // namespace

RinexSink::RinexSink(const RinexOptions& options, const std::string& model, double antenna_height)
    : model_(model) {
  if (!IsRawDataDecoded(model)) Complain(WhyNoRawData(model));
  log_.SetBase(options.base);
  log_.SetReceiver(model);
  log_.SetLogInterval(options.interval > 0.0 ? options.interval : kEveryEpoch);
  log_.SetAntennaHeight(antenna_height);
  log_.Enable(true);
  log_.Open();
  Step();
}

bool RinexSink::OnRawData(const CGPSDataRaw& epoch) {
  if (log_.IsEpochDue(epoch)) log_.WriteEpoch(epoch);
  return false;
}

bool RinexSink::OnEphemeris(const CGPSDataEphemeris& ephemeris) {
  log_.WriteEphemeris(ephemeris);
  return false;
}

void RinexSink::Step() {
  if (log_.IsBroken()) throw Failure(ExitCode::failed, log_.GetLastErrorString().ToUtf8());
}

bool RinexSink::Finish() {
  log_.Close();
  if (log_.GetNumEpochs() == 0) {
    Complain("no raw epoch came, so that there is no " + log_.ObservationPath() + "; " +
             WhyNoRawData(model_));
    return false;
  }
  Complain(log_.ObservationPath() + ": " + log_.GetStatusString().ToUtf8());
  return true;
}

}  // namespace host
