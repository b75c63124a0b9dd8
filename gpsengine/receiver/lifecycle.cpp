#include "gpsengine/platform/application.h"
#include "gpsengine/receiver/gpsreceiver.h"

std::mutex CGPSReceiver::s_RecordMutex;
CGPSData CGPSReceiver::m_GPSData;
CGPSDataRaw CGPSReceiver::m_GPSDataRaw;
CGPSDataEphemeris CGPSReceiver::m_GPSEphemeris;
// A thread that comes back late may outlive main.
CBinBuffer& CGPSReceiver::m_GPSMessageRaw = *new CBinBuffer;
CSerialPort CGPSReceiver::m_Port;
CSpeedEngine CGPSReceiver::m_SpeedEngine;
CShared<bool> CGPSReceiver::m_bComputeMotion = true;
CShared<bool> CGPSReceiver::m_bGSAReceived = false;
CShared<bool> CGPSReceiver::m_bGSVReceived = false;
CShared<bool> CGPSReceiver::m_bMonitorNmea = false;
CShared<std::uint32_t> CGPSReceiver::m_wNmeaBits = 0;
CShared<int> CGPSReceiver::m_nNextGSV = 1;
CShared<int> CGPSReceiver::m_nTotalGSV = 0;
CShared<double> CGPSReceiver::s_dBinInterval = 0.2;

namespace {

const CString kBaudEntry = "Baud";

}  // namespace

const CGPSDriver& CGPSReceiver::GetDriver() const {
  static constexpr CGPSDriver kNone;
  return kNone;
}

CGPSReceiver::CGPSReceiver() {
  m_bComputeMotion = true;
  m_bGSAReceived = m_bGSVReceived = false;
  MonitorNmea(false);
  m_nNextGSV = 1;
  m_nTotalGSV = 0;
}

CGPSReceiver::~CGPSReceiver() {
  CGPSReceiver::EnablePostProcessing(false);
  m_Port.Close();
}

CGPSReceiver::SharedState::SharedState() : m_dBinInterval(s_dBinInterval) {
  const RecordLock lock = LockRecord();
  m_Status = m_GPSData.m_Status;
}

CGPSReceiver::SharedState::~SharedState() {
  const RecordLock lock = LockRecord();
  m_GPSData.m_Status = m_Status;
  s_dBinInterval = m_dBinInterval;
}

void CGPSReceiver::SetupReceiver(int nPort, int nGeoidMode, double dAntennaHeight, const CString& strText,
                                 bool bExternalPort) {
  m_nPortNumber = nPort;
  m_nGeoidMode = nGeoidMode;
  m_dAntennaHeight = dAntennaHeight;
  m_strSetupText = strText;
  m_bExternalPort = bExternalPort;
}

void CGPSReceiver::SetProperties() {
  const int standard = GetDefaultBaudrate();
  CWinApp* app = AfxGetApp();
  m_nBaudrate = app == nullptr ? standard : app->GetProfileInt(GetName(), kBaudEntry, standard);
}

bool CGPSReceiver::SaveDifferentSettings(int nBaudrate) {
  if (nBaudrate == m_nBaudrate) return false;
  m_nBaudrate = nBaudrate;
  if (CWinApp* app = AfxGetApp()) app->WriteProfileInt(GetName(), kBaudEntry, nBaudrate);
  return true;
}

bool CGPSReceiver::Initialize() {
  m_bComputeMotion = true;
  m_bGSAReceived = m_bGSVReceived = false;
  {
    const RecordLock lock = LockRecord();
    m_GPSData.Invalidate(true);
    m_GPSData.m_Status.Invalidate();
  }
  LoadAlternatGPSStatusStrings();
  if (!m_bExternalPort && !OpenPort()) return false;
  WriteRegardless(GetDriver().start);
  return true;
}

bool CGPSReceiver::OpenPort() {
  m_Port.SetPortNumber(m_nPortNumber);
  m_Port.SetBaudRate(m_nBaudrate);
  m_Port.SetFlowControl(0);
  m_Port.SetParity(0);
  m_Port.SetStopBits(0);
  return m_Port.Open();
}

void CGPSReceiver::Suspend() {
  EnablePostProcessing(false);
  if (!m_bExternalPort) m_Port.Close();
}

void* CGPSReceiver::GetPortHandle() const {
  return m_Port.GetHandle();
}

void CGPSReceiver::ResetSpeedEngine() {
  const RecordLock lock = LockRecord();
  m_SpeedEngine.Reset();
}

void CGPSReceiver::InvalidateSVInfo() {
  const RecordLock lock = LockRecord();
  m_GPSData.m_bSatellitesComplete = false;
}

bool CGPSReceiver::AttachRawData(const char* pData, int nLength) {
  const RecordLock lock = LockRecord();
  return m_GPSMessageRaw.Set(pData, nLength, nLength);
}

bool CGPSReceiver::GetLastGPSPositionData(CGPSData& out) const {
  out = m_Notification.m_LastPosition;
  return out.m_bPositionValid;
}

bool CGPSReceiver::GetLastGPSProprietaryMessage(CGPSData& out) const {
  out = m_Notification.m_LastProprietary;
  return out.m_bProprietaryValid;
}

void CGPSReceiver::GetLastGPSRawData(CGPSDataRaw& out) const {
  out = m_Notification.m_LastRaw;
}

void CGPSReceiver::GetLastGPSEphemerisData(CGPSDataEphemeris& out) const {
  out = m_Notification.m_LastEphemeris;
}

void CGPSReceiver::GetBinWords(CWordArray& out) const {
  const RecordLock lock = LockRecord();
  out = m_LastWords;
}
