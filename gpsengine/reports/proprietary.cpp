#include <algorithm>
#include <iterator>

#include "gpsengine/receiver/decoders.h"

// A sentence of a maker that no decoder claims is kept for the host, which may know it:
//   $PGRME,12.0,M,18.5,M,22.1,M*10
// The record that takes it out holds no position of its own.
bool CDecoders::Proprietary(CGPSData& data, const CString& message) {
  if (message.GetLength() < 10 || message.GetLength() > 82) return false;
  const auto kept = message.View().substr(0, std::size(data.m_szProprietary));
  const auto end = std::transform(kept.begin(), kept.end(), std::begin(data.m_szProprietary),
                                  [](WCHAR c) { return static_cast<char>(c & 0xFF); });
  std::fill(end, std::end(data.m_szProprietary), char{0});
  data.m_bProprietaryValid = true;
  data.m_bPositionValid = data.m_bVelocityValid = data.m_bDOPValid = false;
  data.m_bSatellitesComplete = false;
  return true;
}

bool CGPSReceiver::ProcessProprietary(CString& message) {
  return CDecoders::Proprietary(RecordLock()->record, message);
}
