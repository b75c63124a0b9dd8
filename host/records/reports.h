#pragma once

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

#include "gpsengine/records/gpsdata.h"

namespace host {

/// "none", "beacon", "lband", "waas", "cdgps" or "omnistar"; "unknown" for another value.
std::string_view NameOf(DgpsMode mode);
/// An 8-bit text up to its first zero byte, or all of its field, without the line end that may stand behind
/// it.
template <std::size_t N>
std::string_view TextOf(const char (&field)[N]) {
  const std::string_view text(field, static_cast<std::size_t>(std::find(field, field + N, '\0') - field));
  const auto last = text.find_last_not_of("\r\n");
  return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

/// Finds what a published record has of news from the receiver's reports.
class ReportReader {
 public:
  /// Calls `report(key, label, value, unit)` for each setting that arrived with this record: a key for
  /// programs, a label for people, a bool, number or text, and the unit for people. Says whether there were
  /// any.
  template <class Report>
  bool Visit(const CGPSData& data, Report&& report);

 private:
  struct PositionMode {
    double fixed_altitude;
    int mode, pdop_mask, hdop_mask, vdop_mask;
    bool operator==(const PositionMode&) const = default;
  };

  std::optional<PositionMode> position_mode_;  // the last one seen
};

template <class Report>
bool ReportReader::Visit(const CGPSData& data, Report&& report) {
  bool any = false;
  const auto tell = [&](std::string_view key, std::string_view label, auto value,
                        std::string_view unit = "") {
    any = true;
    report(key, label, value, unit);
  };
  const CGPSStatusData& status = data.m_Status;
  if (data.m_bProprietaryValid) tell("proprietary", "sentence", TextOf(data.m_szProprietary));
  if (!status.m_bStatusUpdated) return any;
  if (status.m_bAck) tell("ack", "acknowledged", true);
  if (status.m_bTextValid) tell("text", "text", TextOf(status.m_szText));
  if (status.m_bBeaconStatusValid) {
    tell("beaconSignalStrength", "beacon signal strength", status.m_nBeaconSignalStrength);
    tell("beaconSNR", "beacon SNR", status.m_nBeaconSNR);
    tell("beaconFrequency", "beacon frequency", status.m_dBeaconFrequency, "kHz");
    tell("beaconBitRate", "beacon bit rate", status.m_nBeaconBitRate);
  }
  if (status.m_bBeaconTuneValid) tell("beaconAutoTune", "beacon automatic tuning", status.m_bBeaconAutoTune);
  if (status.m_bElevationMaskValid) {
    tell("elevationMask", "elevation mask", status.m_nElevationMask, "deg");
    // Not every report of a mask says whether it is saved, and the flag for it is always set: only a yes is
    // certain.
    if (status.m_bMaskSaveValid && status.m_bMaskSaved) tell("maskSaved", "mask saved", true);
  }
  if (status.m_bNmeaStatusValid) {
    const NmeaMsgStatus outputs[] = {status.m_nNmeaGGA, status.m_nNmeaGSA, status.m_nNmeaZDA,
                                     status.m_nNmeaGLL, status.m_nNmeaVTG, status.m_nNmeaSAT,
                                     status.m_nNmeaGSV};
    constexpr std::string_view kNames[][2] = {{"nmeaGGA", "GGA"}, {"nmeaGSA", "GSA"}, {"nmeaZDA", "ZDA"},
                                              {"nmeaGLL", "GLL"}, {"nmeaVTG", "VTG"}, {"nmeaSAT", "SAT"},
                                              {"nmeaGSV", "GSV"}};
    for (std::size_t i = 0; i < std::size(outputs); ++i) {
      if (outputs[i] == NMEA_MSG_NO_REPORT) continue;
      tell(kNames[i][0], kNames[i][1], std::string_view(outputs[i] == NMEA_MSG_ON ? "on" : "off"));
    }
  }
  if (status.m_bPositionModeValid) {
    // The flag stays set for good once such a report has come.
    const PositionMode mode{status.m_dFixedAltitude, status.m_nPositionMode, status.m_nPDOPMask,
                            status.m_nHDOPMask, status.m_nVDOPMask};
    if (position_mode_ != mode) {
      position_mode_ = mode;
      tell("positionMode", "position mode", mode.mode);
      tell("fixedAltitude", "fixed altitude", mode.fixed_altitude, "m");
      tell("pdopMask", "PDOP mask", mode.pdop_mask);
      tell("hdopMask", "HDOP mask", mode.hdop_mask);
      tell("vdopMask", "VDOP mask", mode.vdop_mask);
    }
  }
  if (status.m_dOutputInterval >= 0.0)
    tell("outputInterval", "output interval", status.m_dOutputInterval, "s");
  if (status.m_bDgpsModeValid) tell("dgpsMode", "differential source", NameOf(status.m_nDgpsMode));
  if (status.m_nLbandMode != 0) {
    tell("lbandMode", "L-band tuning", std::string_view(status.m_nLbandMode == 1 ? "automatic" : "fixed"));
  }
  return any;
}

}  // namespace host
