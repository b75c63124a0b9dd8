#include "gpsengine/receiver/decoders.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"

// The lines of a parameter listing. They have neither "$" nor checksum.

namespace {

/// The text after `key`. False if the key is not in the line.
bool FindBehind(std::u16string_view line, std::u16string_view key, std::u16string_view& rest) {
  const auto place = line.find(key);
  if (place == line.npos) return false;
  rest = line.substr(place + key.size());
  return true;
}

bool ReadBehind(std::u16string_view line, std::u16string_view key, int& value) {
  std::u16string_view rest;
  return FindBehind(line, key, rest) && ParseInt(rest, &value);
}

bool ReadBehind(std::u16string_view line, std::u16string_view key, double& value) {
  std::u16string_view rest;
  double number = 0.0;
  int remaining = 0;
  if (!FindBehind(line, key, rest) || !ParseDouble(rest, number, remaining)) return false;
  value = number;
  return true;
}

// Where a field of the PRTA line goes; null: it is passed over.
constexpr NmeaMsgStatus CGPSStatusData::*kPrtaFields[] = {
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    &CGPSStatusData::m_nNmeaGLL,
    nullptr,
    &CGPSStatusData::m_nNmeaGGA,
    &CGPSStatusData::m_nNmeaVTG,
    nullptr,
    nullptr,
    &CGPSStatusData::m_nNmeaGSA,
    &CGPSStatusData::m_nNmeaSAT,
    nullptr,
    nullptr,
    nullptr,
    &CGPSStatusData::m_nNmeaZDA,
};

}  // namespace

// Position mode, fixed altitude and the masks of the dilutions:
//   PMD:1 ALT:+0087.50 PDP:40 HDP:05 VDP:06
bool CDecoders::PARPMD(CGPSStatusData& status, CString& message) {
  const auto line = message.View();
  if (!ReadBehind(line, u"PMD:", status.m_nPositionMode)) return false;
  if (!ReadBehind(line, u"ALT:", status.m_dFixedAltitude)) return false;
  if (!ReadBehind(line, u"PDP:", status.m_nPDOPMask)) return false;
  if (!ReadBehind(line, u"HDP:", status.m_nHDOPMask)) return false;
  if (!ReadBehind(line, u"VDP:", status.m_nVDOPMask)) return false;
  status.m_bPositionModeValid = status.m_bStatusUpdated = true;
  return true;
}

// Output interval in seconds:
//   PER:002.00
bool CDecoders::PARPER(CGPSStatusData& status, CString& message) {
  if (!ReadBehind(message.View(), u"PER:", status.m_dOutputInterval)) return false;
  status.m_bStatusUpdated = true;
  return true;
}

// Elevation mask in degrees, and whether the receiver keeps its settings over a power cycle:
//   PEM:08 SAV:Y
bool CDecoders::PARPEM(CGPSStatusData& status, CString& message) {
  CParser parser(message, ": ", true);
  parser.SkipField();
  parser.GetInt(status.m_nElevationMask);
  const bool saved = message.Find("SAV:Y") >= 0;
  if (!saved && message.Find("SAV:N") < 0) return false;
  status.m_bMaskSaved = saved;
  status.m_bMaskSaveValid = status.m_bElevationMaskValid = status.m_bStatusUpdated = true;
  return true;
}

// Which sentences are on, by position:
//   PRTA: 9600 1.0 A ON OFF ON ON OFF OFF ON OFF OFF OFF OFF OFF
bool CDecoders::PARPRTA(CGPSStatusData& status, CString& message) {
  message.Replace("  ", " ");
  CParser parser(message, " ", true);
  CString text;
  for (const auto field : kPrtaFields) {
    parser.GetNextString(text);
    if (field != nullptr && !CGPSReceiver::GetNmeaMsgStatus(text, status.*field)) return false;
  }
  status.m_bNmeaStatusValid = status.m_bStatusUpdated = true;
  return true;
}

bool CGPSReceiver::GetNmeaMsgStatus(const CString& text, NmeaMsgStatus& status) {
  status = text.StartsWith("ON") ? NMEA_MSG_ON : text.StartsWith("OFF") ? NMEA_MSG_OFF : NMEA_MSG_NO_REPORT;
  return status != NMEA_MSG_NO_REPORT;
}

bool CGPSReceiver::GetNmeaMsgStatus(const CString& text, NmeaMsgStatus& status, const CString& key) {
  std::u16string_view rest;
  if (!FindBehind(text.View(), key.View(), rest)) {
    status = NMEA_MSG_NO_REPORT;
    return true;
  }
  double rate = 0.0;
  int remaining = 0;
  if (!ParseDouble(rest, rate, remaining)) return false;
  status = rate > 0.0 ? NMEA_MSG_ON : NMEA_MSG_OFF;
  return true;
}
