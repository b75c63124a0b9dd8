#include <cmath>
#include <numbers>

#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/decoders.h"
#include "gpsengine/text/parser.h"

namespace {

constexpr int kLeastSatellites = 4;

// GGA quality indicators, by their number.
constexpr SignalType kGgaQuality[] = {
    UDF_SIGNAL_NONE,           // 0 no fix
    UDF_SIGNAL_GPS,            // 1 autonomous
    UDF_SIGNAL_CORRECTED_GPS,  // 2 differential
    UDF_SIGNAL_GPS,            // 3 precise positioning service
    UDF_SIGNAL_RTK_FIXED,      // 4
    UDF_SIGNAL_RTK_FLOAT,      // 5
    UDF_SIGNAL_CALCULATED,     // 6 dead reckoning
    UDF_SIGNAL_MANUAL,         // 7
    UDF_SIGNAL_GPS,            // 8 simulator
    UDF_SIGNAL_WAAS,           // 9
};

SignalType GgaSignal(int quality) {
  const bool known = quality >= 0 && quality < static_cast<int>(std::size(kGgaQuality));
  return known ? kGgaQuality[quality] : UDF_SIGNAL_GPS;
}

// An inertial system calculates its position, whatever kind of fix lies under it.
SignalType InggaSignal(int quality) {
  return quality == 0 ? UDF_SIGNAL_NONE : UDF_SIGNAL_CALCULATED;
}

// Degrees and minutes as one number, 4737.193 for 47° 37.193', in radians.
double ToRadians(double position) {
  const double value = position / 100.0;
  const double degrees = std::trunc(value);
  const double minutes = (value - degrees) * 100.0;
  return (minutes / 60.0 + degrees) * std::numbers::pi / 180.0;
}

// hhmmss.ss, as one number, to seconds of the day.
double SecondsOfDay(double time) {
  const double hours = std::trunc(time / 10000.0);
  time -= hours * 10000.0;
  const double minutes = std::trunc(time / 100.0);
  return minutes * 60.0 + hours * 3600.0 + (time - minutes * 100.0);
}

// The fields in the order of the sentence. Each function reads one or two that belong together, and is false
// if they are not there.

bool ReadTime(CParser& parser, CGPSData& data) {
  double time = 0.0;
  if (!parser.GetDouble(time)) return false;
  data.m_dTimeOfDay = SecondsOfDay(time);
  return true;
}

// Of the hemisphere's letters `positive` is the one of positive coordinates. Without a hemisphere the
// coordinate stays as the sentence has it.
bool ReadCoordinate(CParser& parser, std::u16string_view positive, double& coordinate) {
  std::u16string_view hemisphere;
  if (!parser.GetDouble(coordinate) || !parser.GetField(hemisphere)) return false;
  coordinate = ToRadians(hemisphere == positive ? coordinate : -coordinate);
  return true;
}

bool ReadPlace(CParser& parser, CGPSData& data) {
  return ReadCoordinate(parser, u"N", data.m_dLatitude) && ReadCoordinate(parser, u"E", data.m_dLongitude);
}

bool ReadSatellites(CParser& parser, CGPSData& data) {
  if (!parser.GetInt(data.m_nSatellitesUsed)) return false;
  if (data.m_nSatellitesUsed < kLeastSatellites) data.m_nSignalType = UDF_SIGNAL_NONE;
  return true;
}

bool ReadDilution(CParser& parser, CGPSData& data) {
  if (!parser.GetDouble(data.m_dHDOP)) return false;
  return data.m_bDOPValid = true;
}

bool IsInMetres(std::u16string_view unit, const char* name, const char* what) {
  if (unit == u"M" || unit == u"m") return true;
  Trace("%s %s is not in meters!\n", name, what);
  return false;
}

bool ReadQuality(CParser& parser, const CDecoding& in, SignalType (*signal)(int)) {
  int quality = 0;
  if (!parser.GetInt(quality)) return false;
  int& type = in.state.record.m_nSignalType;
  if (!in.MapQuality(quality, type)) type = signal(quality);
  return true;
}

bool ReadHeight(CParser& parser, CGPSData& data) {
  std::u16string_view unit;
  return parser.GetDouble(data.m_dAltitude) && parser.GetField(unit) &&
         IsInMetres(unit, "GGA", "Ellipsoid Height");
}

// From the antenna's height to the one that the host wants. A separation that is not there, or not in metres,
// is none.
void CorrectHeight(CParser& parser, const CDecoding& in, const char* name) {
  double& height = in.state.record.m_dAltitude;
  height -= in.AntennaHeight();
  const int mode = in.GeoidMode();
  double separation = 0.0;
  std::u16string_view unit;
  if (mode == 0 || !parser.GetDouble(separation) || !parser.GetField(unit)) return;
  if (!IsInMetres(unit, name, "Geoidal Separation")) return;
  const double corrected = height + (mode == 1 ? separation : -separation);
  if (std::isfinite(corrected)) height = corrected;
}

}  // namespace

double CGPSReceiver::GPSPosToRadians(double position) {
  return ToRadians(position);
}

bool CDecoding::MapQuality(int quality, int& signal) const {
  if (!receiver.m_bAlternateSignalTable) return false;
  const auto entry = receiver.m_AlternateSignalTable.find(quality);
  if (entry == receiver.m_AlternateSignalTable.end()) return false;
  signal = entry->second;
  return true;
}

// $GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47
bool CDecoders::GGA(const CDecoding& in) {
  CGPSData& data = in.state.record;
  data.m_nSignalType = UDF_SIGNAL_NONE;
  data.m_bPositionValid = true;
  CParser parser(CParser::InPlace(in.message), ",*", false);
  parser.SkipField();
  const bool whole = ReadTime(parser, data) && ReadPlace(parser, data) &&
                     ReadQuality(parser, in, GgaSignal) && ReadSatellites(parser, data) &&
                     ReadDilution(parser, data) && ReadHeight(parser, data);
  if (!whole) return InvalidSentence("GGA");
  CorrectHeight(parser, in, "GGA");
  return true;
}

// $INGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*50
// The sentence of an inertial system, which has a position while its receiver has none: time, satellites,
// dilution and height may be missing, and then keep their values.
bool CDecoders::INGGA(const CDecoding& in) {
  CGPSData& data = in.state.record;
  data.m_nSignalType = UDF_SIGNAL_NONE;
  data.m_bPositionValid = true;
  CParser parser(CParser::InPlace(in.message), ",*", false);
  parser.SkipField();
  ReadTime(parser, data);
  if (!ReadPlace(parser, data) || !ReadQuality(parser, in, InggaSignal)) return InvalidSentence("INGGA");
  parser.GetInt(data.m_nSatellitesUsed);
  data.m_bDOPValid = parser.GetDouble(data.m_dHDOP);
  const bool height = parser.GetDouble(data.m_dAltitude);
  std::u16string_view unit;  // one that is missing is no metre either
  parser.GetField(unit);
  if (!IsInMetres(unit, "INGGA", "Ellipsoid Height")) return InvalidSentence("INGGA");
  // A height that was kept has had its corrections already.
  if (height) CorrectHeight(parser, in, "INGGA");
  return true;
}
