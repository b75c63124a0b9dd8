#include "host/exports/rinexsink.h"

#include "host/commands/rawdata.h"
#include "host/records/units.h"
#include "host/run/failure.h"

namespace host {

namespace {

// The least interval that a log takes. No receiver sends raw epochs that fast.
constexpr double kEveryEpoch = 0.1;

}  // namespace

RinexSink::RinexSink(const RinexOptions& options, const std::string& model, double antenna_height)
    : model_(model) {
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

bool RinexSink::OnData(const Record& record) {
  if (!record.HasFix()) return false;
  place_.m_dLatitude = record.epoch.latitude;
  place_.m_dLongitude = record.epoch.longitude;
  place_.m_dHeight = record.data.m_dAltitude;
  place_.m_bPositionValid = true;
  return false;
}

bool RinexSink::OnBin(const Block& block) {
  if (block.epoch != nullptr) Write(*block.epoch);
  if (block.ephemeris == nullptr) return false;
  constexpr std::size_t kMostWaiting = 64;
  const CGPSDataEphemeris& orbit = block.ephemeris->orbit;
  if (orbit.m_nWeek >= kWeeksOfRound || waiting_.size() >= kMostWaiting) return OnEphemeris(orbit);
  waiting_.push_back(orbit);
  return false;
}

// A week that the receiver tells whole is the surest of dates.
void RinexSink::Write(const rawdata::ObservationEpoch& epoch) {
  if (epoch.week >= kWeeksOfRound) log_.SetPivot(MomentOf({epoch.week, epoch.time_of_week}));
  WriteWaiting();
  CGPSDataRaw raw;
  if (!rawdata::ToDataRaw(epoch, raw)) return;
  raw.m_Time = CTime::GetCurrentTime();
  raw.m_dLatitude = place_.m_dLatitude;
  raw.m_dLongitude = place_.m_dLongitude;
  raw.m_dHeight = place_.m_dHeight;
  raw.m_bPositionValid = place_.m_bPositionValid;
  OnRawData(raw);
}

void RinexSink::WriteWaiting() {
  for (const CGPSDataEphemeris& orbit : waiting_) log_.WriteEphemeris(orbit);
  waiting_.clear();
}

void RinexSink::Step() {
  if (log_.IsBroken()) throw Failure(ExitCode::failed, log_.GetLastErrorString().ToUtf8());
}

bool RinexSink::Finish() {
  WriteWaiting();
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
