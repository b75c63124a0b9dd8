#include "fuzz/support.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>

#include "gpsengine/receiver/workingstate.h"

void Require(bool bClaim, const char* pszClaim) {
  if (bClaim) return;
  std::fprintf(stderr, "Not so: %s\n", pszClaim);
  std::abort();
}

unsigned Input::Byte() {
  const std::string_view byte = Take(1);
  return byte.empty() ? 0 : static_cast<unsigned char>(byte[0]);
}

std::string_view Input::Take(std::size_t nCount) {
  const std::string_view taken = m_Rest.substr(0, nCount);
  m_Rest.remove_prefix(taken.size());
  return taken;
}

std::string_view Input::TakeThrough(char delimiter) {
  const auto end = m_Rest.find(delimiter);
  const std::string_view taken = Take(end);
  Take(1);
  return taken;
}

CString TextOf(std::string_view bytes, bool bWide) {
  if (!bWide) return CString(bytes.data(), static_cast<int>(bytes.size()));
  std::u16string text(bytes.size() / 2, u'\0');
  std::memcpy(text.data(), bytes.data(), text.size() * 2);
  return CString(std::u16string_view(text));
}

namespace {

void RequireNumbers(std::initializer_list<double> numbers, const char* pszClaim) {
  Require(std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); }),
          pszClaim);
}

void CheckStatus(const CGPSStatusData& status) {
  Require(std::memchr(status.m_szText, 0, sizeof status.m_szText) != nullptr, "a text has its terminator");
  RequireNumbers({status.m_dBeaconFrequency, status.m_dFixedAltitude, status.m_dOutputInterval},
                 "the numbers of the status are numbers");
  for (const NmeaMsgStatus state :
       {status.m_nNmeaGGA, status.m_nNmeaGSA, status.m_nNmeaZDA, status.m_nNmeaGLL, status.m_nNmeaVTG,
        status.m_nNmeaSAT, status.m_nNmeaGSV})
    Require(state >= NMEA_MSG_ON && state <= NMEA_MSG_NO_REPORT, "the state of a sentence is one of three");
  Require(status.m_nDgpsMode >= DGPS_MODE_NONE && status.m_nDgpsMode <= DGPS_MODE_OMNISTAR, "a known source");
  Require(status.m_nLbandMode >= 0 && status.m_nLbandMode <= 2, "a known mode of L-band");
}

void CheckRecord(const CGPSData& record) {
  RequireNumbers({record.m_dLatitude, record.m_dLongitude, record.m_dAltitude, record.m_dTimeOfDay,
                  record.m_dHDOP, record.m_dPDOP, record.m_dVDOP, record.m_dAverageSNR, record.m_dSpeed,
                  record.m_dHeading, record.m_dLocalNorth, record.m_dLocalEast},
                 "position, quality and motion are numbers");
  Require(record.m_nSignalType >= UDF_SIGNAL_NONE && record.m_nSignalType <= UDF_SIGNAL_UNKNOWN,
          "a known kind of fix");
  Require(record.m_nSatellitesInView >= record.m_nSatellitesUsed, "as many in view as are used");
  for (const CGPSSatelliteData& slot : record.m_Satellites) {
    RequireNumbers({slot.m_dElevation, slot.m_dAzimuth}, "a satellite's angles are numbers");
    const auto same = [&](const CGPSSatelliteData& other) { return other.m_nPRN == slot.m_nPRN; };
    Require(slot.m_nPRN == 0 ||
                std::count_if(std::begin(record.m_Satellites), std::end(record.m_Satellites), same) == 1,
            "a satellite has one slot");
  }
  const auto behind = std::find(std::begin(record.m_szProprietary), std::end(record.m_szProprietary), '\0');
  Require(std::all_of(behind, std::end(record.m_szProprietary), [](char c) { return c == 0; }),
          "nothing is left of an earlier sentence of a maker");
  CheckStatus(record.m_Status);
}

void RepairSentence(std::uint8_t* pData, std::size_t nSize) {
  constexpr char kHex[] = "0123456789ABCDEF";
  unsigned sum = 0;
  for (std::size_t i = 1; i + 2 < nSize && pData[i] != '$' && pData[i] != '\r'; ++i) {
    if (pData[i] == '*') {
      pData[i + 1] = static_cast<std::uint8_t>(kHex[sum >> 4 & 15]);
      pData[i + 2] = static_cast<std::uint8_t>(kHex[sum & 15]);
      return;
    }
    sum ^= pData[i];
  }
}

// The record's payload of so many bytes ends with the sum of the words ahead.
void RepairRecord(std::uint8_t* pPayload, std::size_t nPayload) {
  unsigned sum = 0;
  for (std::size_t i = 0; i + 2 < nPayload; i += 2)
    sum += static_cast<unsigned>(pPayload[i] << 8 | pPayload[i + 1]);
  pPayload[nPayload - 2] = static_cast<std::uint8_t>(sum >> 8);
  pPayload[nPayload - 1] = static_cast<std::uint8_t>(sum);
}

// How they begin, and how many bytes of payload follow.
constexpr std::pair<std::string_view, std::size_t> kRecordKinds[] = {
    {"$PASHR,MBN,", 42}, {"$PASHR,PBN,", 56}, {"$PASHR,SNV,", 132}};

}  // namespace

void CheckingWindow::OnNewData(const CGPSData& data) {
  CheckRecord(data);
  if (data.m_bPositionValid) m_dLastFix = data.m_dTimeOfDay;
}

void CheckingWindow::OnNewString(const CString& text) {
  Require(text.Right(1) == CString("\n") || text.IsEmpty(), "the text of a message ends in a line feed");
  Require(text.Find(u'\0') < 0, "the text of a message ends at a zero");
}

// Its numbers are the receiver's own, and may be anything.
void CheckingWindow::OnNewRawData(const CGPSDataRaw& epoch) {
  Require(epoch.m_bPositionValid, "an epoch leaves with its position");
  Require(epoch.m_nSatellites >= 4 && epoch.m_nSatellites <= 11, "an epoch has 4 to 11 satellites");
  CGPSSatelliteDataRaw satellite;
  for (int i = 0; i < epoch.m_nSatellites; ++i)
    Require(epoch.GetSatelliteData(satellite, i) && satellite.m_bValid && satellite.m_nPRN > 0,
            "a used slot has a satellite");
  Require(!epoch.GetSatelliteData(satellite, epoch.m_nSatellites), "no satellite after the last");
}

void CheckingWindow::OnNewEphemeris(const CGPSDataEphemeris& ephemeris) {
  Require(ephemeris.m_nWeek > 0, "an ephemeris has a week");
}

Rig& Rig::Instance() {
  static auto* const rig = new Rig;
  return *rig;
}

CGPSReceiver& Rig::StartOver(unsigned nModel, int nGeoidMode) {
  // More bytes than any stream may hold throw away what is left of the last input.
  Feed(std::string(16392, 'x'));
  CGPSReceiver::RecordLock()->Reset();
  const auto& receivers = engine.GetReceivers();
  CGPSReceiver* const receiver = receivers[nModel % receivers.size()].get();
  engine.SetReceiver(receiver);
  engine.m_bAttachRawData = true;
  engine.m_ComBuffer.m_bPaused = true;
  engine.m_ComBuffer.m_strData.Empty();
  receiver->SetupReceiver(1, nGeoidMode, 2.5, "", false);
  receiver->Initialize();
  line.ForgetSteps();
  return *receiver;
}

void Rig::Feed(std::string_view bytes) {
  CBinBuffer chunk(bytes.data(), static_cast<int>(bytes.size()));
  engine.UpdateGPSBuffer(chunk);
  window.Forget();
  window.Drain();
}

std::string WriteFile(const std::string& strName, std::string_view content) {
  static const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  std::ofstream(folder / strName, std::ios::binary) << content;
  return folder / strName;
}

void RepairChecksums(std::uint8_t* pData, std::size_t nSize) {
  for (std::size_t i = 0; i < nSize; ++i) {
    if (pData[i] != '$') continue;
    const std::string_view rest(reinterpret_cast<const char*>(pData + i), nSize - i);
    const auto* const kind = std::ranges::find_if(kRecordKinds, [rest](const auto& known) {
      return rest.starts_with(known.first) && rest.size() >= known.first.size() + known.second;
    });
    if (kind == std::end(kRecordKinds)) {
      RepairSentence(pData + i, nSize - i);
    } else {
      RepairRecord(pData + i + kind->first.size(), kind->second);
      i += kind->first.size() + kind->second;
    }
  }
}
