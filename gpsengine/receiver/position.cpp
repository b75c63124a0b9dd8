#include <cmath>
#include <numbers>

#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/receiver/invalid.h"
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

int GgaSignalType(int nQuality) {
  const bool known = nQuality >= 0 && nQuality < static_cast<int>(std::size(kGgaQuality));
  return known ? kGgaQuality[nQuality] : UDF_SIGNAL_GPS;
}

// An inertial system calculates its position, whatever kind of fix stands behind it.
int InggaSignalType(int nQuality) {
  return nQuality == 0 ? UDF_SIGNAL_NONE : UDF_SIGNAL_CALCULATED;
}

// hhmmss.ss, as one number, to seconds of the day.
double SecondsOfDay(double dTime) {
  const double hours = std::trunc(dTime / 10000.0);
  dTime -= hours * 10000.0;
  const double minutes = std::trunc(dTime / 100.0);
  return minutes * 60.0 + hours * 3600.0 + (dTime - minutes * 100.0);
}

bool IsMetres(std::u16string_view unit) {
  return unit == u"M" || unit == u"m";
}

// The unit of a height.
bool IsInMetres(std::u16string_view unit, const char* pszName) {
  if (IsMetres(unit)) return true;
  Trace("%s Ellipsoid Height is not in meters!\n", pszName);
  return false;
}

}  // namespace

double CGPSReceiver::GPSPosToRadians(double dPos) {
  const double value = dPos / 100.0;
  const double degrees = std::trunc(value);
  const double minutes = (value - degrees) * 100.0;
  return (minutes / 60.0 + degrees) * std::numbers::pi / 180.0;
}

// A coordinate and its hemisphere, whose letter `positive` is the positive one. Without a hemisphere the
// coordinate stays as the sentence has it.
bool CGPSReceiver::ReadCoordinate(CParser& parser, std::u16string_view positive, double& coordinate) {
  std::u16string_view hemisphere;
  if (!parser.GetDouble(coordinate) || !parser.GetField(hemisphere)) return false;
  coordinate = GPSPosToRadians(hemisphere == positive ? coordinate : -coordinate);
  return true;
}

// Both coordinates, and the quality indicator behind them.
bool CGPSReceiver::ReadPlace(CParser& parser, int& nQuality) {
  return ReadCoordinate(parser, u"N", m_GPSData.m_dLatitude) &&
         ReadCoordinate(parser, u"E", m_GPSData.m_dLongitude) && parser.GetInt(nQuality);
}

// The signal type of a quality indicator, if the host's own table has one for it.
bool CGPSReceiver::MapQuality(int nQuality, int& nSignalType) const {
  if (!m_bAlternateSignalTable) return false;
  const auto entry = m_AlternateSignalTable.find(nQuality);
  if (entry == m_AlternateSignalTable.end()) return false;
  nSignalType = entry->second;
  return true;
}

// Applies the geoid separation as it was set up. A sentence that has none, or not in metres, leaves the
// height.
void CGPSReceiver::ApplySeparation(CParser& parser, const char* pszName) {
  const int mode = m_nGeoidMode;
  double separation = 0.0;
  std::u16string_view unit;
  if (mode == 0 || !parser.GetDouble(separation) || !parser.GetField(unit)) return;
  if (!IsMetres(unit)) {
    Trace("%s Geoidal Separation is not in meters!\n", pszName);
    return;
  }
  const double height = m_GPSData.m_dAltitude + (mode == 1 ? separation : -separation);
  if (std::isfinite(height)) m_GPSData.m_dAltitude = height;
}

// $GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47
bool CGPSReceiver::ProcessGGA(CString& strMessage) {
  CGPSData& data = m_GPSData;
  data.m_nSignalType = UDF_SIGNAL_NONE;
  data.m_bPositionValid = true;
  CParser parser(CParser::InPlace(strMessage), ",*", false);
  parser.SkipField();
  double time = 0.0;
  if (!parser.GetDouble(time)) return InvalidSentence("GGA");
  data.m_dTimeOfDay = SecondsOfDay(time);
  int quality = 0;
  if (!ReadPlace(parser, quality)) return InvalidSentence("GGA");
  if (!MapQuality(quality, data.m_nSignalType)) data.m_nSignalType = GgaSignalType(quality);
  if (!parser.GetInt(data.m_nSatellitesUsed)) return InvalidSentence("GGA");
  if (data.m_nSatellitesUsed < kLeastSatellites) data.m_nSignalType = UDF_SIGNAL_NONE;
  if (!parser.GetDouble(data.m_dHDOP)) return InvalidSentence("GGA");
  data.m_bDOPValid = true;
  std::u16string_view unit;
  if (!parser.GetDouble(data.m_dAltitude) || !parser.GetField(unit) || !IsInMetres(unit, "GGA"))
    return InvalidSentence("GGA");
  data.m_dAltitude -= m_dAntennaHeight;
  ApplySeparation(parser, "GGA");
  return true;
}

// $INGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*50
// The sentence of an inertial system, which has a position while its receiver has none: time, satellites,
// dilution and height may be missing, and then keep their values.
bool CGPSReceiver::ProcessINGGA(CString& strMessage) {
  CGPSData& data = m_GPSData;
  data.m_nSignalType = UDF_SIGNAL_NONE;
  data.m_bPositionValid = true;
  CParser parser(CParser::InPlace(strMessage), ",*", false);
  parser.SkipField();
  double time = 0.0;
  if (parser.GetDouble(time)) data.m_dTimeOfDay = SecondsOfDay(time);
  int quality = 0;
  if (!ReadPlace(parser, quality)) return InvalidSentence("INGGA");
  if (!MapQuality(quality, data.m_nSignalType)) data.m_nSignalType = InggaSignalType(quality);
  parser.GetInt(data.m_nSatellitesUsed);
  data.m_bDOPValid = parser.GetDouble(data.m_dHDOP);
  const bool height = parser.GetDouble(data.m_dAltitude);
  std::u16string_view unit;
  parser.GetField(unit);
  if (!IsInMetres(unit, "INGGA")) return InvalidSentence("INGGA");
  // A height that was kept has had its corrections already.
  if (!height) return true;
  data.m_dAltitude -= m_dAntennaHeight;
  ApplySeparation(parser, "INGGA");
  return true;
}
