#include "gpsengine/drivers/gsr2650lb.h"

#include "gpsengine/drivers/gsr2650lbcommands.h"
#include "gpsengine/platform/clock.h"
#include "gpsengine/reports/fields.h"

using namespace gsr2650lb;

// Not the virtual call that it looks like: the class's own set-up, which finds no port to open yet.
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

void Cgsr2650lb::SetDefaultNMEA() {
  Write(kDefaultNmea);
}

void Cgsr2650lb::SetGgaOnlyNMEA() {
  Write(kGgaOnlyNmea);
}

void Cgsr2650lb::QueryNmeaActive() {
  Write(kQueryNmea);
}

void Cgsr2650lb::QueryWAAS() {
  Write(kQueryWaas);
}

void Cgsr2650lb::QueryOmniStar() {
  Write(kQueryOmniStar);
}

void Cgsr2650lb::QuerySatElevMask() {
  if (!Write(kQueryElevMask)) return;
  const RecordLock lock = LockRecord();
  m_GPSData.m_Status.m_bElevationMaskValid = m_GPSData.m_Status.m_bStatusUpdated = false;
}

void Cgsr2650lb::QueryBeacon() {
  if (Write(kQueryBeacon)) ForgetSource();
}

void Cgsr2650lb::QueryDgpsMode() {
  if (Write(kQuerySource)) ForgetSource();
}

void Cgsr2650lb::ForgetSource() {
  const RecordLock lock = LockRecord();
  CGPSStatusData& status = m_GPSData.m_Status;
  status.m_nDgpsMode = DGPS_MODE_NONE;
  status.m_bDgpsModeValid = status.m_bStatusUpdated = false;
}

void Cgsr2650lb::SetSatElevMask(int nDegrees) {
  CString strLine;
  strLine.Format("ECUTOFF %i\r\n", nDegrees);
  Write(strLine, 200);
  Write(kSaveMask);
}

void Cgsr2650lb::SetBeacon(BEACON_MODE_TYPE, CString, CString) {
  Write(kSources[DGPS_MODE_BEACON]);
}

// No report answers this, so that the host is told the mode from here.
void Cgsr2650lb::SetDgpsMode(DgpsMode mode) {
  if (!Write(kDatum)) return;
  if (mode >= 0 && mode < static_cast<int>(std::size(kSources))) Write(kSources[mode]);
  Write(kSaveSource);
  const RecordLock lock = LockRecord();
  CGPSStatusData& status = m_GPSData.m_Status;
  status.m_nDgpsMode = mode;
  status.m_bDgpsModeValid = status.m_bStatusUpdated = true;
}

void Cgsr2650lb::SetLbandFrequency(double dFrequency, int nBitRate) {
  const bool bAuto = dFrequency == 0.0;
  CString strLine;
  strLine.Format("ASSIGNOMNI USER %.0f %d\r\n", dFrequency * 1000, nBitRate);
  if (!(bAuto ? Write(kLbandAuto) : Write(strLine, 800))) return;
  {
    const RecordLock lock = LockRecord();
    m_GPSData.m_Status.m_nLbandMode = bAuto ? kLbandModeAuto : kLbandModeFixed;
  }
  Write(kSaveSource);
}

void Cgsr2650lb::SendCorrection() {
  Write(kUserDatum);
}

void Cgsr2650lb::ChangeCDGPS_Freq(double dFrequency) {
  if (!(dFrequency >= 0.0 && dFrequency <= 3000.0)) return;
  CString strLine;
  strLine.Format("ASSIGNLBAND CDGPS %i 4800\r\n", static_cast<int>(dFrequency) * 1000);
  Write(strLine, 100);
  Write(kSave);
}

bool Cgsr2650lb::ResetAll(bool bWaitForAck) {
  if (!m_Port.IsOpen()) return false;
  // The receiver starts anew whether or not it has acknowledged.
  const bool bReset = WriteAck(kReset.pszLine, bWaitForAck, static_cast<int>(kReset.nWait));
  if (!Initialize()) return false;
  SetDgpsMode(DGPS_MODE_BEACON);
  Sleep(kRestartTime);
  return bReset;
}

void Cgsr2650lb::SetRawDataOutput(bool bOn, int nPeriod) {
  if (!m_Port.IsOpen()) return;
  if (bOn) {
    CString strLine;
    strLine.Format("LOG RANGEB ONTIME %i\r\n", nPeriod);
    Write(strLine, 100);
    Write(kRawOn);
    m_nRawDataInterval = nPeriod;
  } else {
    Write(kRawOff);
  }
  m_bRawDataOutput = bOn;
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
