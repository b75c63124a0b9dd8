#include "host/records/recordsink.h"

#include <algorithm>
#include <string_view>
#include <type_traits>
#include <vector>

#include "host/records/jsonwriter.h"

namespace host {

namespace {

// Names a field once: the key is the member's own name.
#define FIELD(name) visit(#name, record.name)

// The fields of each record, in the order in which they stand there.

template <class Visitor>
void VisitFields(const CGPSSatelliteData& record, Visitor&& visit) {
  FIELD(m_dElevation);
  FIELD(m_dAzimuth);
  FIELD(m_nPRN);
  FIELD(m_bUsed);
  FIELD(m_bInView);
  FIELD(m_nSNR);
}

template <class Visitor>
void VisitFields(const CGPSStatusData& record, Visitor&& visit) {
  FIELD(m_bStatusUpdated);
  FIELD(m_bBeaconStatusValid);
  FIELD(m_nBeaconSignalStrength);
  FIELD(m_nBeaconSNR);
  FIELD(m_dBeaconFrequency);
  FIELD(m_nBeaconBitRate);
  FIELD(m_bBeaconTuneValid);
  FIELD(m_bBeaconAutoTune);
  FIELD(m_bMaskSaveValid);
  FIELD(m_bElevationMaskValid);
  FIELD(m_nElevationMask);
  FIELD(m_bMaskSaved);
  FIELD(m_bNmeaStatusValid);
  FIELD(m_nNmeaGGA);
  FIELD(m_nNmeaGSA);
  FIELD(m_nNmeaZDA);
  FIELD(m_nNmeaGLL);
  FIELD(m_nNmeaVTG);
  FIELD(m_nNmeaSAT);
  FIELD(m_nNmeaGSV);
  FIELD(m_bPositionModeValid);
  FIELD(m_dFixedAltitude);
  FIELD(m_nPositionMode);
  FIELD(m_nPDOPMask);
  FIELD(m_nHDOPMask);
  FIELD(m_nVDOPMask);
  FIELD(m_dOutputInterval);
  FIELD(m_bAck);
  FIELD(m_bDgpsModeValid);
  FIELD(m_nDgpsMode);
  FIELD(m_nLbandMode);
  FIELD(m_bTextValid);
  FIELD(m_szText);
}

template <class Visitor>
void VisitFields(const CGPSData& record, Visitor&& visit) {
  FIELD(m_dLatitude);
  FIELD(m_dLongitude);
  FIELD(m_dAltitude);
  FIELD(m_dHDOP);
  FIELD(m_dPDOP);
  FIELD(m_dVDOP);
  FIELD(m_dAverageSNR);
  FIELD(m_Time);
  FIELD(m_Satellites);
  FIELD(m_nSatellitesUsed);
  FIELD(m_nSatellitesInView);
  FIELD(m_nSignalType);
  FIELD(m_dHeading);
  FIELD(m_dSpeed);
  FIELD(m_bPositionValid);
  FIELD(m_bVelocityValid);
  FIELD(m_bDOPValid);
  FIELD(m_bSatellitesComplete);
  FIELD(m_bSatellitesChanged);
  FIELD(m_bProprietaryValid);
  FIELD(m_dTimeOfDay);
  FIELD(m_dLocalNorth);
  FIELD(m_dLocalEast);
  FIELD(m_szProprietary);
  FIELD(m_Status);
}

template <class Visitor>
void VisitFields(const CGPSSatelliteDataRaw& record, Visitor&& visit) {
  FIELD(m_nPRN);
  FIELD(m_nSignalCount);
  FIELD(m_dPseudorange);
  FIELD(m_dCarrierPhase);
  FIELD(m_dDoppler);
  FIELD(m_dSpare1);
  FIELD(m_dSpare2);
  FIELD(m_bValid);
}

template <class Visitor>
void VisitFields(const CGPSDataRaw& record, Visitor&& visit) {
  FIELD(m_Time);
  FIELD(m_dLatitude);
  FIELD(m_dLongitude);
  FIELD(m_dHeight);
  FIELD(m_dSpare);
  FIELD(m_bPositionValid);
  FIELD(m_bSpare);
  FIELD(m_bEpochComplete);
  FIELD(m_dReceiverTime);
  FIELD(m_dCorrectedTime);
  FIELD(m_dClockOffset);
  FIELD(m_dClockDrift);
  FIELD(m_nGPSWeek);
  FIELD(m_Satellites);
  FIELD(m_nSatellites);
}

template <class Visitor>
void VisitFields(const CGPSDataEphemeris& record, Visitor&& visit) {
  FIELD(m_nPRN);
  FIELD(m_nWeek);
  FIELD(m_lTow);
  FIELD(m_dTgd);
  FIELD(m_lAodc);
  FIELD(m_lToc);
  FIELD(m_dAf2);
  FIELD(m_dAf1);
  FIELD(m_dAf0);
  FIELD(m_lAode);
  FIELD(m_dDeltaN);
  FIELD(m_dM0);
  FIELD(m_dEccentricity);
  FIELD(m_dSqrtA);
  FIELD(m_lToe);
  FIELD(m_dCic);
  FIELD(m_dCrc);
  FIELD(m_dCis);
  FIELD(m_dCrs);
  FIELD(m_dCuc);
  FIELD(m_dCus);
  FIELD(m_dOmega0);
  FIELD(m_dOmega);
  FIELD(m_dI0);
  FIELD(m_dOmegaDot);
  FIELD(m_dIDot);
}

template <class Visitor>
void VisitFields(const rawdata::SignalObservation& record, Visitor&& visit) {
  visit("system", std::string_view(&record.system, 1));
  FIELD(satellite);
  FIELD(code);
  FIELD(pseudorange);
  FIELD(carrier_phase);
  FIELD(doppler);
  FIELD(cn0);
  FIELD(slip);
  FIELD(half_cycle);
  if (record.glonass_channel) visit("glonass_channel", *record.glonass_channel);
}

template <class Visitor>
void VisitFields(const rawdata::ObservationEpoch& record, Visitor&& visit) {
  FIELD(week);
  FIELD(time_of_week);
  FIELD(signals);
}

template <class Visitor>
void VisitFields(const rawdata::BroadcastEphemeris& record, Visitor&& visit) {
  FIELD(orbit);
  FIELD(accuracy);
  FIELD(health);
  FIELD(codes_on_l2);
  FIELD(l2p_without_data);
  FIELD(long_fit);
}

template <class Visitor>
void VisitFields(const Block& record, Visitor&& visit) {
  if (record.head.family == rawdata::Family::none) return;
  visit("block", std::string_view(record.Name()));
  FIELD(bytes);
  if (record.epoch != nullptr) visit("observations", *record.epoch);
  if (record.ephemeris != nullptr) visit("ephemeris", *record.ephemeris);
}

#undef FIELD

/// Writes a record's fields as members of the current object.
template <class Record>
class FieldWriter {
 public:
  FieldWriter(JsonWriter& json, const Record& record) : json_(json), record_(record) {}

  template <class T>
  void operator()(std::string_view name, const T& value) {
    json_.Key(name);
    Write(value);
  }

 private:
  template <class T>
  void Write(const T& value) {
    if constexpr (std::is_enum_v<T>) {
      json_.Value(static_cast<int>(value));
    } else if constexpr (std::is_arithmetic_v<T>) {
      json_.Value(value);
    } else {
      WriteObject(value);
    }
  }
  void Write(const CTime& time) { json_.Value(time.GetTime()); }
  void Write(std::string_view text) { json_.Text(text); }
  template <class T>
  void Write(const std::vector<T>& items) {
    json_.BeginArray();
    for (const T& item : items) WriteObject(item);
    json_.EndArray();
  }
  // A fixed text ends at its first zero byte, or fills its field.
  template <std::size_t N>
  void Write(const char (&text)[N]) {
    json_.Text({text, static_cast<std::size_t>(std::find(text, text + N, '\0') - text)});
  }
  template <class T, std::size_t N>
  void Write(const T (&slots)[N]) {
    json_.BeginArray();
    for (std::size_t i = 0; i < Count(N); ++i) WriteObject(slots[i]);
    json_.EndArray();
  }
  // The satellite table is shown whole, a raw epoch's slots as far as they are in use.
  std::size_t Count(std::size_t slots) const {
    if constexpr (std::is_same_v<Record, CGPSDataRaw>) {
      return std::min(slots, static_cast<std::size_t>(std::max(record_.m_nSatellites, 0)));
    }
    return slots;
  }
  template <class T>
  void WriteObject(const T& record) {
    json_.BeginObject();
    VisitFields(record, FieldWriter<T>(json_, record));
    json_.EndObject();
  }

  JsonWriter& json_;
  const Record& record_;
};

template <class Record>
void WriteMessage(std::string& out, std::string_view message, const Record& record) {
  JsonWriter json(out);
  json.BeginObject();
  json.Member("message", message);
  VisitFields(record, FieldWriter<Record>(json, record));
  json.EndObject();
  out += '\n';
}

}  // namespace

bool RecordSink::OnData(const host::Record& record) {
  WriteMessage(out_, "WM_GPS_NEW_DATA", record.data);
  return true;
}

bool RecordSink::OnRawData(const CGPSDataRaw& epoch) {
  WriteMessage(out_, "WM_GPS_NEW_RAW_DATA", epoch);
  return true;
}

bool RecordSink::OnEphemeris(const CGPSDataEphemeris& ephemeris) {
  WriteMessage(out_, "WM_GPS_NEW_EPHEMERIS", ephemeris);
  return true;
}

bool RecordSink::OnBin(const Block& block) {
  WriteMessage(out_, "WM_GPS_NEW_BIN", block);
  return true;
}

}  // namespace host
