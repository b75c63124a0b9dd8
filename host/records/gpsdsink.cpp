#include "host/records/gpsdsink.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gpsengine/rawdata/gpstime.h"
#include "gpsengine/sentences/positionerror.h"
#include "host/records/fixkind.h"
#include "host/run/face.h"

namespace host {

namespace {

// The height that a position sentence states is one above mean sea level. With the separation added it is one
// above the ellipsoid. Subtracting is for makes that state the ellipsoidal height there, and leaves one above
// mean sea level.
constexpr std::string_view HeightKey(Geoid geoid) {
  return geoid == Geoid::add ? "altHAE" : "altMSL";
}

void WriteVehicle(JsonWriter& json, const SatelliteId& id) {
  json.Member("PRN", id.Prn());
  if (id.system == Gnss::unknown) return;
  json.Member("gnssid", static_cast<int>(id.system));
  json.Member("svid", id.number);
}

void WriteMeasurement(JsonWriter& json, const CGPSSatelliteDataRaw& satellite) {
  json.BeginObject();
  WriteVehicle(json, SatelliteOf(satellite.m_nPRN));
  json.Member("obs", "L1C");
  json.MemberFixed("pseudorange", satellite.m_dPseudorange, 3);
  json.MemberFixed("carrierphase", satellite.m_dCarrierPhase, 3);
  json.MemberFixed("doppler", satellite.m_dDoppler, 3);
  json.Member("count", satellite.m_nSignalCount);
  json.EndObject();
}

void WriteMeasurement(JsonWriter& json, const rawdata::SignalObservation& signal) {
  json.BeginObject();
  WriteVehicle(json, SatelliteOf(signal));
  json.Member("obs", std::string("L") + signal.code);
  const std::pair<std::string_view, double> members[] = {{"pseudorange", signal.pseudorange},
                                                         {"carrierphase", signal.carrier_phase},
                                                         {"doppler", signal.doppler},
                                                         {"snr", signal.cn0}};
  for (const auto& [key, value] : members) {
    if (value != 0.0) json.MemberFixed(key, value, 3);
  }
  if (signal.slip && signal.carrier_phase != 0.0) json.Member("lli", 1);
  if (signal.glonass_channel) json.Member("freqid", *signal.glonass_channel);
  json.EndObject();
}

void WriteSatellite(JsonWriter& json, const Satellite& satellite, bool has_used) {
  json.BeginObject();
  WriteVehicle(json, satellite.id);
  if (satellite.elevation) json.MemberFixed("el", *satellite.elevation, 1);
  if (satellite.azimuth) json.MemberFixed("az", *satellite.azimuth, 1);
  if (satellite.signal) json.Member("ss", *satellite.signal);
  if (has_used) json.Member("used", satellite.used);
  json.EndObject();
}

/// What is not known is left out.
void WriteKnown(JsonWriter& json, std::string_view key, const std::optional<double>& value, int decimals) {
  if (value) json.MemberFixed(key, *value, decimals);
}

}  // namespace

GpsdSink::GpsdSink(std::string& out, const std::string& device, Geoid geoid)
    : out_(out), height_key_(HeightKey(geoid)) {
  if (!device.empty()) JsonWriter(device_).Utf8(device);
}

void GpsdSink::Begin(JsonWriter& json, std::string_view name) {
  json.BeginObject();
  json.Key("class");
  json.Plain(name);
  if (device_.empty()) return;
  json.Key("device");
  json.Verbatim(device_);
}

void GpsdSink::End(JsonWriter& json) {
  json.EndObject();
  out_ += '\n';
}

bool GpsdSink::OnData(const Record& record) {
  if (record.HasPosition()) WritePosition(record.epoch);
  const bool reports = record.kinds.Has(Kind::report) && WriteReports(record.data);
  return record.HasPosition() || reports;
}

void GpsdSink::SetReference(std::optional<Moment> reference) {
  if (reference != reference_) near_ = reference_ = reference;
}

/// The objects of an epoch have the same time.
void GpsdSink::WriteTime(JsonWriter& json, Moment time) {
  if (time != written_) {
    written_ = time;
    iso_.clear();
    AppendIso(iso_, time);
  }
  json.Key("time");
  json.Plain(iso_);
}

Moment GpsdSink::Date(double time_of_day) const {
  return DateTimeOfDay(time_of_day, reference_ ? *near_ : Now());
}

void GpsdSink::WritePosition(const PositionEpoch& epoch) {
  JsonWriter json(out_);
  Begin(json, "TPV");
  json.Member("mode", epoch.valid ? 3 : 1);
  if (epoch.time) WriteTime(json, *epoch.time);
  if (epoch.time) near_ = epoch.time;
  if (epoch.valid) {
    const int status = FixKindOf(epoch.signal).gpsd;
    if (status != 0) json.Member("status", status);
    json.MemberFixed("lat", epoch.latitude, 9);
    json.MemberFixed("lon", epoch.longitude, 9);
    json.MemberFixed(height_key_, *epoch.height, 4);
    WriteKnown(json, "track", epoch.course, 4);
    WriteKnown(json, "speed", epoch.speed, 3);
  }
  End(json);
}

bool GpsdSink::OnSky(const Sky& sky) {
  JsonWriter json(out_);
  Begin(json, "SKY");
  if (sky.time_of_day) WriteTime(json, Date(*sky.time_of_day));
  WriteKnown(json, "hdop", sky.hdop, 2);
  WriteKnown(json, "pdop", sky.pdop, 2);
  WriteKnown(json, "vdop", sky.vdop, 2);
  if (sky.has_list) json.Member("nSat", sky.in_view);
  if (sky.used) json.Member("uSat", *sky.used);
  if (sky.has_list) {
    json.Key("satellites");
    json.BeginArray();
    for (const Satellite& satellite : sky.satellites) WriteSatellite(json, satellite, sky.has_used);
    json.EndArray();
  }
  End(json);
  return true;
}

bool GpsdSink::OnSentence(const Fields& sentence) {
  if (!kinds_.Has(Kind::fix) || !sentence.Is("GST")) return false;
  const auto error = PositionErrorOf(sentence);
  JsonWriter json(out_);
  Begin(json, "GST");
  if (error->time_of_day) WriteTime(json, Date(*error->time_of_day));
  const std::pair<std::string_view, std::optional<double>> members[] = {
      {"rms", error->ranges},         {"major", error->major},  {"minor", error->minor},
      {"orient", error->orientation}, {"lat", error->latitude}, {"lon", error->longitude},
      {"alt", error->height}};
  for (const auto& [key, value] : members) WriteKnown(json, key, value, 3);
  End(json);
  return true;
}

bool GpsdSink::WriteReports(const CGPSData& data) {
  const auto news = reports_.NewsIn(data);
  if (news.empty()) return false;
  JsonWriter json(out_);
  Begin(json, "STATUS");
  for (const Report& report : news) {
    json.Key(report.key);
    std::visit([&json](const auto& value) { json.Value(value); }, report.value);
  }
  End(json);
  return true;
}

bool GpsdSink::OnRawData(const CGPSDataRaw& epoch) {
  JsonWriter json(out_);
  Begin(json, "RAW");
  json.Member("week", ResolveWeek(epoch.m_nGPSWeek, reference_.value_or(MomentOf(epoch.m_Time))));
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

bool GpsdSink::OnBin(const Block& block) {
  if (block.ephemeris != nullptr) return OnEphemeris(block.ephemeris->orbit);
  if (block.epoch == nullptr) return false;
  JsonWriter json(out_);
  Begin(json, "RAW");
  json.Member("week", ResolveWeek(block.epoch->week, reference_.value_or(Now())));
  json.MemberFixed("tow", block.epoch->time_of_week, 3);
  json.Key("rawdata");
  json.BeginArray();
  for (const rawdata::SignalObservation& signal : block.epoch->signals) WriteMeasurement(json, signal);
  json.EndArray();
  End(json);
  return true;
}

bool GpsdSink::OnEphemeris(const CGPSDataEphemeris& e) {
  JsonWriter json(out_);
  Begin(json, "EPHEMERIS");
  WriteVehicle(json, SatelliteOf(e.m_nPRN));
  json.Member("week", ResolveWeek(e.m_nWeek, reference_.value_or(Now())));
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
