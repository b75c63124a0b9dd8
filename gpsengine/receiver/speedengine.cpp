#include "gpsengine/receiver/speedengine.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kEarthRadius = 6378000.0;  // metres, for both axes of the local grid
constexpr double kSecondsOfDay = 86400.0;

// A sentence may hold any number. The reference point would not get rid of one that has no place on the grid.
bool IsPlace(const CGPSData& fix) {
  return std::isfinite(fix.m_dLatitude * kEarthRadius) && std::isfinite(fix.m_dLongitude * kEarthRadius);
}

}  // namespace

double Distance(double east1, double north1, double east2, double north2) {
  const double east = east2 - east1;
  const double north = north2 - north1;
  return std::sqrt(east * east + north * north);
}

double Direction(double north, double east) {
  constexpr double pi = std::numbers::pi;
  if (north == 0.0 && east == 0.0) return 0.0;
  if (east == 0.0) return north > 0.0 ? pi / 2.0 : -pi / 2.0;
  const double angle = std::fabs(std::atan(north / east));
  if (north > 0.0) return east > 0.0 ? angle : pi - angle;
  return east > 0.0 ? -angle : -pi + angle;
}

void CSpeedEngine::Reset() {
  m_dEastScale = m_dRefLatitude = m_dRefLongitude = 0.0;
  m_dNewTime = m_dNewNorth = m_dNewEast = 0.0;
  m_dOldTime = m_dOldNorth = m_dOldEast = 0.0;
  RemoveAllFixes();
}

bool CSpeedEngine::ComputeMotion(CGPSData& fix) {
  if (fix.m_nSignalType == UDF_SIGNAL_NONE || !IsPlace(fix)) return false;
  if (m_dEastScale == 0.0) {
    m_dEastScale = std::cos(fix.m_dLatitude) * kEarthRadius;
    m_dRefLatitude = fix.m_dLatitude;
    m_dRefLongitude = fix.m_dLongitude;
  }
  fix.m_dLocalNorth = (fix.m_dLatitude - m_dRefLatitude) * kEarthRadius;
  fix.m_dLocalEast = (fix.m_dLongitude - m_dRefLongitude) * m_dEastScale;
  AddFix(fix);

  double seconds = m_dNewTime - m_dOldTime;
  if (seconds < 0.0) seconds += kSecondsOfDay;  // past midnight
  if (seconds <= 0.0) return false;
  const double speed = Distance(m_dNewEast, m_dNewNorth, m_dOldEast, m_dOldNorth) / seconds;
  if (!std::isfinite(speed)) return false;
  fix.m_dSpeed = speed;
  fix.m_dHeading = Direction(m_dNewNorth - m_dOldNorth, m_dNewEast - m_dOldEast);
  fix.m_bVelocityValid = true;
  return true;
}

void CSpeedEngine::AddFix(const CGPSData& fix) {
  const bool first = m_nFixes == 0;
  double north = 0.0;
  double east = 0.0;
  for (int i = 0; i < m_nFixes; ++i) {
    north += m_Fixes[i].dNorth;
    east += m_Fixes[i].dEast;
  }
  if (!first) {
    m_dOldNorth = north / m_nFixes;
    m_dOldEast = east / m_nFixes;
    m_dOldTime = m_Fixes[m_nFixes - 1].dTime;
  }
  if (m_nFixes == kWindow) {
    north -= m_Fixes[0].dNorth;
    east -= m_Fixes[0].dEast;
    std::rotate(m_Fixes.begin(), m_Fixes.begin() + 1, m_Fixes.end());
    --m_nFixes;
  }
  m_Fixes[m_nFixes++] = {fix.m_dLocalNorth, fix.m_dLocalEast, fix.m_dTimeOfDay};
  m_dNewNorth = (north + fix.m_dLocalNorth) / m_nFixes;
  m_dNewEast = (east + fix.m_dLocalEast) / m_nFixes;
  m_dNewTime = fix.m_dTimeOfDay;
  if (first) {
    m_dOldNorth = m_dNewNorth;
    m_dOldEast = m_dNewEast;
    m_dOldTime = m_dNewTime;
  }
}
