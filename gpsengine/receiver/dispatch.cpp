#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/receiver/sentencetable.h"

namespace {

constexpr int kPromptLength = 6;  // "[COM" and the two characters behind it

int HexDigit(WCHAR c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

// Reads at most four hexadecimal digits; none give 0.
unsigned ReadHex(std::u16string_view text) {
  unsigned value = 0;
  for (const WCHAR c : text.substr(0, 4)) {
    const int digit = HexDigit(c);
    if (digit < 0) break;
    value = value << 4 | static_cast<unsigned>(digit);
  }
  return value;
}

bool IsOemBinary(const CString& message) {
  const auto low = [&](int index) { return message.GetAt(index) & 0xFF; };
  return low(0) == 0xAA && low(1) == 0x44 && low(2) == 0x12;
}

// Bit n stands for kind n; the kinds from 32 up share the bits from 0 up.
std::uint32_t NmeaBit(GPSStringType type) {
  return 1u << (static_cast<unsigned>(type) % 32);
}

}  // namespace

bool CGPSReceiver::Parse(CString& strMessage) {
  if (const int prompt = strMessage.Find("[COM"); prompt >= 0)
    strMessage = strMessage.Mid(prompt + kPromptLength);
  const GPSStringType type = GetGPSStringType(strMessage);
  if (s_bMonitorNmea) GotNmea(type);
  return Parse(strMessage, type);
}

GPSStringType CGPSReceiver::GetGPSStringType(const CString& strMessage) {
  if (IsOemBinary(strMessage)) return GPS_STRING_AXIS4_BIN;
  const SentenceTable::Row* row = SentenceTable::Find(strMessage.View());
  if (row == nullptr) return GPS_STRING_NONE;
  ++m_nSentencesRecognised;
  if (!SentenceTable::IsChecksumTested(row->type) || IsChecksumOK(strMessage)) return row->type;
  ++m_nChecksumErrors;
  return GPS_STRING_NONE;
}

bool CGPSReceiver::IsChecksumOK(const CString& strMessage) {
  const std::u16string_view text = strMessage.View();
  const auto dollar = text.find(u'$');
  const auto star = text.find(u'*');
  if (dollar == std::u16string_view::npos || star == std::u16string_view::npos || star < dollar) return false;
  unsigned sum = 0;
  for (const WCHAR c : text.substr(dollar + 1, star - dollar - 1)) sum ^= c;
  return ((sum ^ ReadHex(text.substr(star + 1))) & 0xFF) == 0;
}

bool CGPSReceiver::Parse(CString& strMessage, GPSStringType type) {
  {
    const RecordLock lock = LockRecord();
    m_GPSData.m_bProprietaryValid = false;
  }
  bool bForce = false;
  switch (type) {
    case GPS_STRING_GGA:
    case GPS_STRING_INGGA:
      if (!Decode(strMessage, type)) return false;
      ComputeMotion();
      break;
    case GPS_STRING_GSA:
      if (!Decode(strMessage, type)) return false;
      m_bGSAReceived = true;
      break;
    case GPS_STRING_GSV:
      if (!Decode(strMessage, type)) return false;
      m_bGSVReceived = bForce = true;
      break;
    case GPS_STRING_PASHR:
      if (TakeAck(strMessage)) break;
      // Who sends standard satellite sentences needs no reports to the same end.
      if (m_bGSAReceived && m_bGSVReceived) return false;
      if (!ProcessPASHR(strMessage)) return false;
      if (PostNewDataRaw()) return true;
      bForce = true;
      break;
    case GPS_STRING_BIN:
      return ProcessBIN();
    case GPS_STRING_AXIS4_BIN:
      if (!ProcessAxis4BIN()) return false;
      break;
    default:
      if (!Decode(strMessage, type)) return false;
  }
  return PostNewData(bForce);
}

// Runs the decoder of a kind. A sentence of a make that has none is kept for the host; the rest is not for
// us.
bool CGPSReceiver::Decode(CString& strMessage, GPSStringType type) {
  if (const SentenceTable::Decoder decoder = SentenceTable::DecoderOf(type))
    return (this->*decoder)(strMessage);
  if (!strMessage.StartsWith("$P") || strMessage.GetLength() <= 5) return false;
  ProcessProprietary(strMessage);
  return true;
}

// The acknowledgement of a command: the wait for it is released by the publication that follows.
bool CGPSReceiver::TakeAck(const CString& strMessage) {
  if (!strMessage.StartsWith("$PASHR,ACK")) return false;
  const RecordLock lock = LockRecord();
  m_GPSData.m_Status.m_bAck = m_GPSData.m_Status.m_bStatusUpdated = true;
  return true;
}

void CGPSReceiver::ComputeMotion() {
  const RecordLock lock = LockRecord();
  if (m_GPSData.m_bPositionValid && m_bComputeMotion) m_SpeedEngine.ComputeMotion(m_GPSData);
}

void CGPSReceiver::MonitorNmea(bool bOn) {
  s_bMonitorNmea = bOn;
  m_wNmeaBits = 0;
}

void CGPSReceiver::GotNmea(GPSStringType type) {
  m_wNmeaBits |= NmeaBit(type);
}

bool CGPSReceiver::HaveGotNmea(GPSStringType type) const {
  return (m_wNmeaBits & NmeaBit(type)) != 0;
}
