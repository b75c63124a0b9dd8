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

void Cgsr2650lb::SetLbandFrequency(double dFrequency, int nBitRate) {
  const bool bAuto = dFrequency == 0.0;
  CString strLine;
  strLine.Format("ASSIGNOMNI USER %.0f %d\r\n", dFrequency * 1000, nBitRate);
  if (!(bAuto ? Write(kLbandAuto) : Write(strLine, 800))) return;
  {
    const RecordLock state;
    state->record.m_Status.m_nLbandMode = bAuto ? kLbandModeAuto : kLbandModeFixed;
  }
  Write(kSaveSource);
}

void Cgsr2650lb::ChangeCDGPS_Freq(double dFrequency) {
  if (!(dFrequency >= 0.0 && dFrequency <= 3000.0)) return;
  CString strLine;
  strLine.Format("ASSIGNLBAND CDGPS %i 4800\r\n", static_cast<int>(dFrequency) * 1000);
  Write(strLine, 100);
  Write(kSave);
}

bool Cgsr2650lb::ResetAll(bool bWaitForAck) {
  if (!m_Port.IsOpen() || IsStopping()) return false;
  bool bReset = false;
  {
    const CNoStop untilSentencesAreOn;
    // The receiver restarts whether or not it has acknowledged.
    bReset = WriteAck(kReset, bWaitForAck);
    if (!Initialize()) return false;
  }
  SetDgpsMode(DGPS_MODE_BEACON);
  Sleep(kRestartTime);
  return bReset && !IsStopping();
}

void Cgsr2650lb::SetRawDataOutput(bool bOn, int nPeriod) {
  if (!m_Port.IsOpen() || IsStopping()) return;
  if (bOn) {
    CString strLine;
    strLine.Format("LOG RANGEB ONTIME %i\r\n", nPeriod);
    Write(strLine, 100);
    Write(kRawOn);
    m_nRawDataInterval = nPeriod;
  } else {
    Write(kRawOff);
  }
  // If stopped halfway, output counts as on, so that the end of the run switches it off.
  if (bOn || !IsStopping()) m_bRawDataOutput = bOn;
  Write(kSave);
}

bool Cgsr2650lb::EnablePostProcessing(bool bOn) {
  if (bOn != m_bRawDataOutput) SetRawDataOutput(bOn, 1);
  return true;
}

bool Cgsr2650lb::SetRawDataOutputInterval(double dInterval) {
  int nPeriod = 0;
  if (!Truncate(dInterval, nPeriod)) return false;
  if (!m_bRawDataOutput || nPeriod != m_nRawDataInterval) SetRawDataOutput(m_bRawDataOutput, nPeriod);
  return true;
}
