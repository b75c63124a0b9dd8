#include "host/records/gpsdsink.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/records/fixkind.h"
#include "host/records/gpstime.h"
#include "host/records/units.h"

namespace host {

namespace {

// The height that a position sentence states is one above mean sea level. With the separation added it is one
// above the ellipsoid. Subtracting is for makes that state the ellipsoidal height there, and leaves one above
// mean sea level.
constexpr std::string_view HeightKey(Geoid geoid) {
  return geoid == Geoid::add ? "altHAE" : "altMSL";
}

/// The satellite system and the number in it behind a number of an NMEA sentence; nothing where makes differ.
struct Vehicle {
  int system;
  int number;
};
std::optional<Vehicle> VehicleOf(int prn) {
  constexpr int kGps = 0, kSbas = 1, kGlonass = 6;
  if (prn >= 1 && prn <= 32) return Vehicle{kGps, prn};
  if (prn >= 33 && prn <= 64) return Vehicle{kSbas, prn + 87};
  if (prn >= 65 && prn <= 96) return Vehicle{kGlonass, prn - 64};
  return std::nullopt;
}

bool SameSatellite(const CGPSSatelliteData& a, const CGPSSatelliteData& b) {
  return a.m_nPRN == b.m_nPRN && a.m_bUsed == b.m_bUsed && a.m_bInView == b.m_bInView &&
         a.m_nSNR == b.m_nSNR && a.m_dElevation == b.m_dElevation && a.m_dAzimuth == b.m_dAzimuth;
}

void WriteVehicle(JsonWriter& json, int prn) {
  json.Member("PRN", prn);
  if (const auto vehicle = VehicleOf(prn)) {
    json.Member("gnssid", vehicle->system);
    json.Member("svid", vehicle->number);
  }
}

void WriteMeasurement(JsonWriter& json, const CGPSSatelliteDataRaw& satellite) {
  json.BeginObject();
  WriteVehicle(json, satellite.m_nPRN);
  json.Member("obs", "L1C");
  json.MemberFixed("pseudorange", satellite.m_dPseudorange, 3);
  json.MemberFixed("carrierphase", satellite.m_dCarrierPhase, 3);
  json.MemberFixed("doppler", satellite.m_dDoppler, 3);
  json.Member("count", satellite.m_nSignalCount);
  json.EndObject();
}

void WriteSatellite(JsonWriter& json, const CGPSSatelliteData& satellite, bool tells_used) {
  json.BeginObject();
  WriteVehicle(json, satellite.m_nPRN);
  json.MemberFixed("el", satellite.m_dElevation * kDegrees, 1);
  json.MemberFixed("az", satellite.m_dAzimuth * kDegrees, 1);
  json.Member("ss", satellite.m_nSNR);
  if (tells_used) json.Member("used", satellite.m_bUsed);
  json.EndObject();
}

void WriteDilution(JsonWriter& json, std::string_view key, double value) {
  if (value > 0.0) json.MemberFixed(key, value, 2);
}

}  // namespace

GpsdSink::GpsdSink(std::string& out, const std::string& device, Geoid geoid)
    : out_(out), height_key_(HeightKey(geoid)) {
  if (!device.empty()) JsonWriter(device_).Utf8(device);
}

void GpsdSink::Begin(JsonWriter& json, std::string_view name) {
  json.BeginObject();
  json.Member("class", name);
  if (device_.empty()) return;
  json.Key("device");
  json.Verbatim(device_);
}

void GpsdSink::End(JsonWriter& json) {
  json.EndObject();
  out_ += '\n';
}

bool GpsdSink::OnData(const CGPSData& data) {
  tells_count_ = tells_count_ || data.m_bPositionValid || data.m_nSatellitesUsed > 0;
  tells_used_ = tells_used_ || std::any_of(std::begin(data.m_Satellites), std::end(data.m_Satellites),
                                           [](const auto& satellite) { return satellite.m_bUsed; });
  const bool position = data.m_bPositionValid && kinds_.Has(Kind::fix);
  if (position) WritePosition(data);
  const bool satellites = kinds_.Has(Kind::satellites) && WriteSatellites(data);
  const bool reports = kinds_.Has(Kind::report) && WriteReports(data);
  return position || satellites || reports;
}

void GpsdSink::WriteTime(JsonWriter& json, const CGPSData& data) {
  if (!HasTimeOfDay(data)) return;
  iso_.clear();
  AppendIso(iso_, DateTimeOfDay(data.m_dTimeOfDay, ReferenceFor(data.m_Time)));
  json.Member("time", std::string_view(iso_));
}

void GpsdSink::WritePosition(const CGPSData& data) {
  JsonWriter json(out_);
  Begin(json, "TPV");
  const bool fix = data.m_nSignalType != UDF_SIGNAL_NONE;
  json.Member("mode", fix ? 3 : 1);
  WriteTime(json, data);
  if (fix) {
    const int status = FixKindOf(data.m_nSignalType).gpsd;
    if (status != 0) json.Member("status", status);
    json.MemberFixed("lat", data.m_dLatitude * kDegrees, 9);
    json.MemberFixed("lon", data.m_dLongitude * kDegrees, 9);
    json.MemberFixed(height_key_, data.m_dAltitude, 4);
    if (data.m_bVelocityValid) {
      // A speed of 0 stands for one too small to have a direction.
      if (data.m_dSpeed > 0.0) {
        json.MemberFixed("track", CourseOf(data), 4);
      }
      json.MemberFixed("speed", data.m_dSpeed, 3);
    }
  }
  End(json);
}

bool GpsdSink::WriteSatellites(const CGPSData& data) {
  const bool whole = data.m_bSatellitesComplete && data.m_bSatellitesChanged;
  if (whole) {
    // The record of a position repeats the satellites of the one before it.
    Table table;
    std::copy(std::begin(data.m_Satellites), std::end(data.m_Satellites), table.begin());
    const bool seen = table_ && std::equal(table.begin(), table.end(), table_->begin(), SameSatellite);
    if (seen && data.m_bPositionValid) return false;
    table_ = table;
  } else {
    // A receiver that sends no satellites with its positions still has its dilution and its count shown.
    if (!data.m_bPositionValid || !data.m_bDOPValid || table_) return false;
    if (!std::exchange(had_position_, true)) return false;
  }
  JsonWriter json(out_);
  Begin(json, "SKY");
  WriteTime(json, data);
  WriteDilution(json, "hdop", data.m_dHDOP);
  WriteDilution(json, "pdop", data.m_dPDOP);
  WriteDilution(json, "vdop", data.m_dVDOP);
  if (whole) json.Member("nSat", data.m_nSatellitesInView);
  if (tells_count_) json.Member("uSat", data.m_nSatellitesUsed);
  if (whole) {
    json.Key("satellites");
    json.BeginArray();
    for (const auto& satellite : data.m_Satellites) {
      if (satellite.m_nPRN != 0 && satellite.m_bInView) WriteSatellite(json, satellite, tells_used_);
    }
    json.EndArray();
  }
  End(json);
  return true;
}

bool GpsdSink::WriteReports(const CGPSData& data) {
  const auto start = out_.size();
  JsonWriter json(out_);
  Begin(json, "STATUS");
  const bool any =
      reports_.Visit(data, [&](std::string_view key, std::string_view, auto value, std::string_view) {
        json.Key(key);
        json.Value(value);
      });
  if (any) {
    End(json);
  } else {
    out_.resize(start);
  }
  return any;
}

bool GpsdSink::OnRawData(const CGPSDataRaw& epoch) {
  JsonWriter json(out_);
  Begin(json, "RAW");
  json.Member("week", ResolveWeek(epoch.m_nGPSWeek, ReferenceFor(epoch.m_Time)));
  json.MemberFixed("tow", epoch.m_dReceiverTime, 3);
  json.MemberFixed("lat", epoch.m_dLatitude, 9);
  json.MemberFixed("lon", epoch.m_dLongitude, 9);
  json.MemberFixed("altHAE", epoch.m_dHeight, 4);
  json.MemberFixed("clockOffset", epoch.m_dClockOffset, 3);
  json.MemberFixed("clockDrift", epoch.m_dClockDrift, 3);
  json.Key("rawdata");
  json.BeginArray();
  for (int i = 0; i < epoch.GetNumSV(); ++i) {
    CGPSSatelliteDataRaw satellite;
    if (epoch.GetSatelliteData(satellite, i) && satellite.m_bValid) WriteMeasurement(json, satellite);
  }
  json.EndArray();
  End(json);
  return true;
}

bool GpsdSink::OnEphemeris(const CGPSDataEphemeris& e) {
  JsonWriter json(out_);
  Begin(json, "EPHEMERIS");
  WriteVehicle(json, e.m_nPRN);
  json.Member("week", ResolveWeek(e.m_nWeek, ReferenceFor(CTime::GetCurrentTime())));
  json.Member("tow", e.m_lTow);
  json.Member("IODC", e.m_lAodc);
  json.Member("IODE", e.m_lAode);
  json.Member("toc", e.m_lToc);
  json.Member("toe", e.m_lToe);
  const std::pair<std::string_view, double> terms[] = {
      {"af0", e.m_dAf0},       {"af1", e.m_dAf1}, {"af2", e.m_dAf2},        {"Tgd", e.m_dTgd},
      {"deltan", e.m_dDeltaN}, {"M0", e.m_dM0},   {"e", e.m_dEccentricity}, {"sqrtA", e.m_dSqrtA},
      {"Omega0", e.m_dOmega0}, {"i0", e.m_dI0},   {"omega", e.m_dOmega},    {"Omegad", e.m_dOmegaDot},
      {"IDOT", e.m_dIDot},     {"Cuc", e.m_dCuc}, {"Cus", e.m_dCus},        {"Crc", e.m_dCrc},
      {"Crs", e.m_dCrs},       {"Cic", e.m_dCic}, {"Cis", e.m_dCis}};
  for (const auto& [key, value] : terms) json.Member(key, value);
  End(json);
  return true;
}

}  // namespace host
