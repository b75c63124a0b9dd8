#include "gpsengine/face/report.h"

#include <algorithm>
#include <iterator>
#include <ostream>

namespace gps {

namespace {

/// An 8-bit text up to its first zero byte, or all of its field, without the line end that may stand after
/// it.
template <std::size_t N>
std::string TextOf(const char (&field)[N]) {
  const std::string_view text(field, static_cast<std::size_t>(std::find(field, field + N, '\0') - field));
  const auto last = text.find_last_not_of("\r\n");
  return std::string(text.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

void AddBeacon(const CGPSStatusData& status, std::vector<Report>& news) {
  if (status.m_bBeaconStatusValid) {
    news.push_back({"beaconSignalStrength", "beacon signal strength", status.m_nBeaconSignalStrength});
    news.push_back({"beaconSNR", "beacon SNR", status.m_nBeaconSNR});
    news.push_back({"beaconFrequency", "beacon frequency", status.m_dBeaconFrequency, "kHz"});
    news.push_back({"beaconBitRate", "beacon bit rate", status.m_nBeaconBitRate});
  }
  if (status.m_bBeaconTuneValid)
    news.push_back({"beaconAutoTune", "beacon automatic tuning", status.m_bBeaconAutoTune});
}

void AddMask(const CGPSStatusData& status, std::vector<Report>& news) {
  if (!status.m_bElevationMaskValid) return;
  news.push_back({"elevationMask", "elevation mask", status.m_nElevationMask, "deg"});
  // Not every report of a mask says whether it is saved, and the flag for it is always set: only a yes is
  // certain.
  if (status.m_bMaskSaveValid && status.m_bMaskSaved) news.push_back({"maskSaved", "mask saved", true});
}

void AddSentences(const CGPSStatusData& status, std::vector<Report>& news) {
  constexpr struct {
    std::string_view key, label;
    NmeaMsgStatus CGPSStatusData::*status;
  } kSentences[] = {
      {"nmeaGGA", "GGA", &CGPSStatusData::m_nNmeaGGA}, {"nmeaGSA", "GSA", &CGPSStatusData::m_nNmeaGSA},
      {"nmeaZDA", "ZDA", &CGPSStatusData::m_nNmeaZDA}, {"nmeaGLL", "GLL", &CGPSStatusData::m_nNmeaGLL},
      {"nmeaVTG", "VTG", &CGPSStatusData::m_nNmeaVTG}, {"nmeaSAT", "SAT", &CGPSStatusData::m_nNmeaSAT},
      {"nmeaGSV", "GSV", &CGPSStatusData::m_nNmeaGSV}};
  if (!status.m_bNmeaStatusValid) return;
  for (const auto& sentence : kSentences) {
    const NmeaMsgStatus is = status.*sentence.status;
    if (is == NMEA_MSG_NO_REPORT) continue;
    news.push_back({sentence.key, sentence.label, std::string(is == NMEA_MSG_ON ? "on" : "off")});
  }
}

}  // namespace

std::string_view NameOf(DgpsMode mode) {
  constexpr std::string_view kNames[] = {"none", "beacon", "lband", "waas", "cdgps", "omnistar"};
  return mode >= 0 && mode < static_cast<int>(std::size(kNames)) ? kNames[mode] : "unknown";
}

std::ostream& operator<<(std::ostream& out, const Report& report) {
  out << report.label << ' ';
  if (const bool* const is = std::get_if<bool>(&report.value)) {
    out << (*is ? "yes" : "no");
  } else {
    std::visit([&out](const auto& value) { out << value; }, report.value);
  }
  return report.unit.empty() ? out : out << ' ' << report.unit;
}

/// The flag stays set for good once such a report has come.
void ReportReader::AddPositionMode(const CGPSStatusData& status, std::vector<Report>& news) {
  const PositionMode mode{status.m_dFixedAltitude, status.m_nPositionMode, status.m_nPDOPMask,
                          status.m_nHDOPMask, status.m_nVDOPMask};
  if (!status.m_bPositionModeValid || position_mode_ == mode) return;
  position_mode_ = mode;
  news.push_back({"positionMode", "position mode", mode.mode});
  news.push_back({"fixedAltitude", "fixed altitude", mode.fixed_altitude, "m"});
  news.push_back({"pdopMask", "PDOP mask", mode.pdop_mask});
  news.push_back({"hdopMask", "HDOP mask", mode.hdop_mask});
  news.push_back({"vdopMask", "VDOP mask", mode.vdop_mask});
}

std::vector<Report> ReportReader::NewsIn(const CGPSData& data) {
  std::vector<Report> news;
  const CGPSStatusData& status = data.m_Status;
  if (data.m_bProprietaryValid) news.push_back({"proprietary", "sentence", TextOf(data.m_szProprietary)});
  if (!status.m_bStatusUpdated) return news;
  if (status.m_bAck) news.push_back({"ack", "acknowledged", true});
  if (status.m_bTextValid) news.push_back({"text", "text", TextOf(status.m_szText)});
  AddBeacon(status, news);
  AddMask(status, news);
  AddSentences(status, news);
  AddPositionMode(status, news);
  if (status.m_dOutputInterval >= 0.0)
    news.push_back({"outputInterval", "output interval", status.m_dOutputInterval, "s"});
  if (status.m_bDgpsModeValid)
    news.push_back({"dgpsMode", "differential source", std::string(NameOf(status.m_nDgpsMode))});
  if (status.m_nLbandMode != 0) {
    const std::string tuning = status.m_nLbandMode == 1 ? "automatic" : "fixed";
    news.push_back({"lbandMode", "L-band tuning", tuning});
  }
  return news;
}

}  // namespace gps
