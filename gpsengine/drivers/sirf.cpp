#include "gpsengine/drivers/sirf.h"

#include <numeric>

#include "gpsengine/platform/clock.h"

namespace {

// NMEA messages by the chip's numbers, in the order of the commands.
struct NmeaMessage {
  int nNumber;
  bool bDefault, bGgaOnly;
};
constexpr NmeaMessage kNmeaMessages[] = {
    {0, true, true},    // GGA
    {2, true, false},   // GSA
    {5, true, false},   // VTG
    {3, true, false},   // GSV
    {4, false, false},  // RMC
    {1, false, false},  // GLL
};
constexpr int kNmeaPeriod = 2;  // seconds between two sentences of a kind

constexpr DWORD kNmeaWait = 400;
constexpr DWORD kBinaryWait = 3000;  // the chip restarts its serial protocol

constexpr int kLongestPayload = 16384;

BYTE LowByte(int n) {
  return static_cast<BYTE>(n & 0xFF);
}
BYTE HighByte(int n) {
  return static_cast<BYTE>(n >> 8 & 0xFF);
}

}  // namespace

constinit const CGPSDriver CSirf::s_Driver = {.pszName = "SiRF", .nBaudrate = 4800, .bDgps = true};
constinit const CGPSDriver CHolux::s_Driver = {.pszName = "Holux", .nBaudrate = 4800, .bDgps = true};
constinit const CGPSDriver CToughbookGPS01::s_Driver = {
    .pszName = "Toughbook GPS01", .nBaudrate = 4800, .bDgps = true};

bool AppendNmeaChecksum(CString& sentence) {
  const int dollar = sentence.Find(u'$');
  if (dollar < 0) return false;
  int sum = 0;
  for (const WCHAR c : sentence.View().substr(static_cast<std::size_t>(dollar) + 1)) sum ^= c;
  CString tail;
  tail.Format("*%02X", sum & 0xFF);
  sentence += tail;
  return true;
}

void CSirf::SetDefaultNMEA() {
  if (!m_Port.IsOpen()) return;
  for (const NmeaMessage& message : kNmeaMessages) SetNmeaMsg(message.nNumber, message.bDefault);
}

void CSirf::SetGgaOnlyNMEA() {
  if (!m_Port.IsOpen()) return;
  for (const NmeaMessage& message : kNmeaMessages) SetNmeaMsg(message.nNumber, message.bGgaOnly);
}

void CSirf::SetNmeaMsg(int message, bool on) {
  if (IsStopping()) return;
  CString line;
  line.Format("$PSRF103,%02d,00,%02d,01", message, on ? kNmeaPeriod : 0);
  AppendNmeaChecksum(line);
  m_Port.Write(line + "\r\n");
  Sleep(kNmeaWait);
}

unsigned short CSirf::CheckSum(unsigned char* payload, unsigned short length) {
  return static_cast<unsigned short>(std::accumulate(payload, payload + length, 0u) & 0x7FFF);
}

// A0 A2, length, payload, checksum, B0 B3; numbers with their high byte first.
bool CSirf::SendBinaryMsg(unsigned char* payload, unsigned short length) {
  if (length > kLongestPayload) return false;
  const int sum = CheckSum(payload, length);
  std::vector<BYTE> frame = {0xA0, 0xA2, HighByte(length), LowByte(length)};
  frame.insert(frame.end(), payload, payload + length);
  frame.insert(frame.end(), {HighByte(sum), LowByte(sum), 0xB0, 0xB3});
  return m_Port.Write(frame.data(), static_cast<int>(frame.size()));
}

// Protocol 0 at the present rate, 8 data bits, 1 stop bit, no parity.
void CSirf::SwitchToBinary() {
  CString line;
  line.Format("$PSRF100,0,%0d,8,1,0", m_nBaudrate.Get());
  AppendNmeaChecksum(line);
  m_Port.Write(line + "\r\n");
  Sleep(kBinaryWait);
}

void CSirf::SendDgpsSourceMsg(DgpsMode mode) {
  BYTE payload[7] = {0x85, BYTE{mode == DGPS_MODE_WAAS}};
  SendBinaryMsg(payload, sizeof payload);
  Sleep(kBinaryWait);
}

// Message 0x81 also sets all sentence rates, here to 0; the caller has to enable the sentences it wants.
void CSirf::SwitchToNmea() {
  BYTE payload[24] = {0x81, 2};
  payload[22] = HighByte(m_nBaudrate);
  payload[23] = LowByte(m_nBaudrate);
  SendBinaryMsg(payload, sizeof payload);
  Sleep(kBinaryWait);
}

void CSirf::SetDgpsMode(DgpsMode mode) {
  if (!m_Port.IsOpen() || IsStopping()) return;
  const CNoStop until_sentences_are_on;
  SwitchToBinary();
  if (!CurrentClock().WantsStop()) SendDgpsSourceMsg(mode);
  SwitchToNmea();
  SetDefaultNMEA();
}

bool CSirf::ResetAll(bool) {
  if (!Initialize() || !m_Port.IsOpen() || IsStopping()) return false;
  const CNoStop until_sentences_are_on;
  SwitchToNmea();
  SetDefaultNMEA();
  return true;
}
