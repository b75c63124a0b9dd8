#include "gpsengine/drivers/gsr2650lb.h"

#include "gpsengine/drivers/gsr2650lbcommands.h"
#include "gpsengine/platform/clock.h"
#include "gpsengine/receiver/workingstate.h"
#include "gpsengine/reports/fields.h"

using namespace gsr2650lb;

// The row has no beacon query and no settings: such operations work, but are not offered.
constinit const CGPSDriver Cgsr2650lb::s_Driver = {
    .pszName = "GSR2650 LB",
    .bRawData = true,
    .bDgps = true,
    .defaultNmea = kDefaultNmea,
    .ggaOnlyNmea = kGgaOnlyNmea,
    .queryNmea = kQueryNmea,
    .queryElevMask = kQueryElevMask,
    .setElevMask = kSetElevMask,
    .queryDgps = kQuerySource,
    .queryOmniStar = kQueryOmniStar,
    .queryWaas = kQueryWaas,
    .sendCorrection = kUserDatum,
};

// Deliberately not virtual: the class's own Initialize, which finds no port to open yet.
Cgsr2650lb::Cgsr2650lb() {
  Cgsr2650lb::Initialize();
}

bool Cgsr2650lb::Initialize() {
  m_bRawDataOutput = false;
  m_nRawDataInterval = 0;
  if (!CGPSReceiver::Initialize()) return false;
  SetDefaultNMEA();
  return true;
}

void Cgsr2650lb::QuerySatElevMask() {
  if (!Write(kQueryElevMask)) return;
  const RecordLock state;
  state->record.m_Status.m_bElevationMaskValid = state->record.m_Status.m_bStatusUpdated = false;
}

void Cgsr2650lb::QueryBeacon() {
  if (Write(kQueryBeacon)) ForgetSource();
}

void Cgsr2650lb::QueryDgpsMode() {
  if (Write(kQuerySource)) ForgetSource();
}

void Cgsr2650lb::ForgetSource() {
  const RecordLock state;
  CGPSStatusData& status = state->record.m_Status;
  status.m_nDgpsMode = DGPS_MODE_NONE;
  status.m_bDgpsModeValid = status.m_bStatusUpdated = false;
}

void Cgsr2650lb::SetBeacon(BEACON_MODE_TYPE, CString, CString) {
  Write(kSources[DGPS_MODE_BEACON]);
}

// No report answers this, so the mode is published from here.
void Cgsr2650lb::SetDgpsMode(DgpsMode mode) {
  if (!Write(kDatum)) return;
  if (mode >= 0 && mode < static_cast<int>(std::size(kSources))) Write(kSources[mode]);
  Write(kSaveSource);
  if (IsStopping()) return;
  const RecordLock state;
  CGPSStatusData& status = state->record.m_Status;
  status.m_nDgpsMode = mode;
  status.m_bDgpsModeValid = status.m_bStatusUpdated = true;
}

void Cgsr2650lb::SetLbandFrequency(double frequency, int bit_rate) {
  const bool automatic = frequency == 0.0;
  CString line;
  line.Format("ASSIGNOMNI USER %.0f %d\r\n", frequency * 1000, bit_rate);
  if (!(automatic ? Write(kLbandAuto) : Write(line, 800))) return;
  {
    const RecordLock state;
    state->record.m_Status.m_nLbandMode = automatic ? kLbandModeAuto : kLbandModeFixed;
  }
  Write(kSaveSource);
}

void Cgsr2650lb::ChangeCDGPS_Freq(double frequency) {
  if (!(frequency >= 0.0 && frequency <= 3000.0)) return;
  CString line;
  line.Format("ASSIGNLBAND CDGPS %i 4800\r\n", static_cast<int>(frequency) * 1000);
  Write(line, 100);
  Write(kSave);
}

bool Cgsr2650lb::ResetAll(bool wait_for_ack) {
  if (!m_Port.IsOpen() || IsStopping()) return false;
  bool reset = false;
  {
    const CNoStop until_sentences_are_on;
    // The receiver restarts whether or not it has acknowledged.
    reset = WriteAck(kReset, wait_for_ack);
    if (!Initialize()) return false;
  }
  SetDgpsMode(DGPS_MODE_BEACON);
  Sleep(kRestartTime);
  return reset && !IsStopping();
}

void Cgsr2650lb::SetRawDataOutput(bool on, int period) {
  if (!m_Port.IsOpen() || IsStopping()) return;
  if (on) {
    CString line;
    line.Format("LOG RANGEB ONTIME %i\r\n", period);
    Write(line, 100);
    Write(kRawOn);
    m_nRawDataInterval = period;
  } else {
    Write(kRawOff);
  }
  // If stopped halfway, output counts as on, so that the end of the run switches it off.
  if (on || !IsStopping()) m_bRawDataOutput = on;
  Write(kSave);
}

bool Cgsr2650lb::EnablePostProcessing(bool on) {
  if (on != m_bRawDataOutput) SetRawDataOutput(on, 1);
  return true;
}

bool Cgsr2650lb::SetRawDataOutputInterval(double interval) {
  int period = 0;
  if (!Truncate(interval, period)) return false;
  if (!m_bRawDataOutput || period != m_nRawDataInterval) SetRawDataOutput(m_bRawDataOutput, period);
  return true;
}
