#include "host/exports/rinexsink.h"

#include "gpsengine/face/rawoutput.h"
#include "host/records/units.h"
#include "host/run/face.h"
#include "host/run/failure.h"

namespace host {

namespace {

// The least interval that a log takes. No receiver sends raw epochs that fast.
constexpr double kEveryEpoch = 0.1;

// What the blocks of each family may hold: all that is decoded of OEM messages; GPS and SBAS of the others.
constexpr RinexKind kOfBin{.in_decibels = true, .systems = 2, .more_than_l1_ca = false};
constexpr RinexKind kOfOem{.in_decibels = true, .systems = 7, .more_than_l1_ca = true};

}  // namespace

RinexSink::RinexSink(const RinexOptions& options, const std::string& model, double antenna_height)
    : model_(model), log_(options.version) {
  RinexStation station = options.station;
  if (station.receiver.empty()) station.receiver = model;
  station.interval = options.interval;
  log_.SetStation(station);
  log_.SetBase(options.base);
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

bool RinexSink::OnBin(const Block& block) {
  if (block.epoch != nullptr) {
    const RinexKind& kind = block.head.family == rawdata::Family::oem ? kOfOem : kOfBin;
    log_.IsEpochDue(*block.epoch) ? (void)log_.WriteEpoch(*block.epoch, kind) : log_.SkipEpoch(*block.epoch);
  }
  if (block.ephemeris != nullptr) log_.WriteEphemeris(*block.ephemeris);
  return false;
}

bool RinexSink::OnData(const Record& record) {
  // The record has the antenna's height taken off, as the log does.
  if (record.HasFix()) {
    log_.SetPlace(record.epoch.latitude, record.epoch.longitude,
                  record.data.m_dAltitude + log_.GetAntennaHeight());
  }
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
