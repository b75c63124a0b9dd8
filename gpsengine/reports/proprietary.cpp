#include <algorithm>
#include <iterator>

#include "gpsengine/receiver/gpsreceiver.h"

// A sentence of a maker that no decoder claims is kept for the host, which may know it:
//   $PGRME,12.0,M,18.5,M,22.1,M*10
// The record that takes it out holds no position of its own.
bool CGPSReceiver::ProcessProprietary(CString& strMessage) {
  if (strMessage.GetLength() < 10 || strMessage.GetLength() > 82) return false;
  const auto kept = strMessage.View().substr(0, std::size(m_GPSData.m_szProprietary));
  const auto end = std::transform(kept.begin(), kept.end(), std::begin(m_GPSData.m_szProprietary),
                                  [](WCHAR c) { return static_cast<char>(c & 0xFF); });
  std::fill(end, std::end(m_GPSData.m_szProprietary), char{0});
  m_GPSData.m_bProprietaryValid = true;
  m_GPSData.m_bPositionValid = m_GPSData.m_bVelocityValid = m_GPSData.m_bDOPValid = false;
  m_GPSData.m_bSatellitesComplete = false;
  return true;
}
