#include "gpsengine/platform/application.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/receiver/workingstate.h"

namespace {

const CString kBaudEntry = "Baud";

// A thread that comes back late may outlive main: this is never destroyed.
union Lasting {
  CWorkingState state;
  Lasting() : state() {}
  ~Lasting() {}
} g_Lasting;

}  // namespace

std::mutex CGPSReceiver::s_StateMutex;
constinit CWorkingState& CGPSReceiver::s_State = g_Lasting.state;
constinit CGPSData& CGPSReceiver::m_GPSData = g_Lasting.state.record;
constinit CGPSDataRaw& CGPSReceiver::m_GPSDataRaw = g_Lasting.state.epoch;
constinit CGPSDataEphemeris& CGPSReceiver::m_GPSEphemeris = g_Lasting.state.ephemeris;
constinit CBinBuffer& CGPSReceiver::m_GPSMessageRaw = g_Lasting.state.message;
constinit CSpeedEngine& CGPSReceiver::m_SpeedEngine = g_Lasting.state.speed;
constinit bool& CGPSReceiver::m_bComputeMotion = g_Lasting.state.computeMotion;
constinit bool& CGPSReceiver::m_bGSAReceived = g_Lasting.state.gsaReceived;
constinit bool& CGPSReceiver::m_bGSVReceived = g_Lasting.state.gsvReceived;
constinit CShared<bool>& CGPSReceiver::m_bMonitorNmea = g_Lasting.state.monitorNmea;
constinit CShared<std::uint32_t>& CGPSReceiver::m_wNmeaBits = g_Lasting.state.nmeaBits;
constinit int& CGPSReceiver::m_nNextGSV = g_Lasting.state.nextGsv;
constinit int& CGPSReceiver::m_nTotalGSV = g_Lasting.state.totalGsv;
CSerialPort CGPSReceiver::m_Port;

CGPSReceiver::SharedState::SharedState() : m_pWas(std::make_unique<CWorkingState>(*RecordLock())) {}

CGPSReceiver::SharedState::~SharedState() {
  *RecordLock() = *m_pWas;
}

const CGPSDriver& CGPSReceiver::GetDriver() const {
  static constexpr CGPSDriver kNone;
  return kNone;
}

CGPSReceiver::CGPSReceiver() {
  const RecordLock state;
  state->ForgetSentences();
  state->monitorNmea = false;
  state->nmeaBits = 0;
  state->nextGsv = 1;
  state->totalGsv = 0;
}

CGPSReceiver::~CGPSReceiver() {
  CGPSReceiver::EnablePostProcessing(false);
  m_Port.Close();
}

void CGPSReceiver::SetupReceiver(int port, int geoid_mode, double antenna_height, const CString& text,
                                 bool external_port) {
  m_nPortNumber = port;
  m_nGeoidMode = geoid_mode;
  m_dAntennaHeight = antenna_height;
  m_strSetupText = text;
  m_bExternalPort = external_port;
}

void CGPSReceiver::SetProperties() {
  const int standard = GetDefaultBaudrate();
  CWinApp* app = AfxGetApp();
  m_nBaudrate = app == nullptr ? standard : app->GetProfileInt(GetName(), kBaudEntry, standard);
}

bool CGPSReceiver::SaveDifferentSettings(int baudrate) {
  if (baudrate == m_nBaudrate) return false;
  m_nBaudrate = baudrate;
  if (CWinApp* app = AfxGetApp()) app->WriteProfileInt(GetName(), kBaudEntry, baudrate);
  return true;
}

bool CGPSReceiver::Initialize() {
  {
    const RecordLock state;
    state->ForgetSentences();
    state->record.Invalidate(true);
    state->record.m_Status.Invalidate();
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
  RecordLock()->speed.Reset();
}

void CGPSReceiver::ForgetSatelliteSentences() {
  const RecordLock state;
  state->gsaReceived = state->gsvReceived = false;
}

void CGPSReceiver::InvalidateSVInfo() {
  RecordLock()->record.m_bSatellitesComplete = false;
}

bool CGPSReceiver::AttachRawData(const char* data, int length) {
  return RecordLock()->message.Set(data, length, length);
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
  const RecordLock state;
  out = m_LastWords;
}
