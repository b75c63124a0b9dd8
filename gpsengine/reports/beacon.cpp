#include "gpsengine/receiver/decoders.h"
#include "gpsengine/text/parser.h"

// What a beacon receiver says of itself.

namespace {

// A checksum such as 4A reads as a number, and must not stand in for a last field that is missing.
CString WithoutChecksum(const CString& sentence) {
  const int asterisk = sentence.Find(u'*');
  return asterisk < 0 ? sentence : sentence.Left(asterisk);
}

}  // namespace

// Signal strength, signal to noise ratio, frequency and bit rate:
//   $CRMSS,52,21,310.0,100*45
bool CDecoders::CRMSS(CGPSStatusData& status, CString& message) {
  CParser parser(WithoutChecksum(message), ",*", true);
  parser.SkipField();
  parser.GetInt(status.m_nBeaconSignalStrength);
  parser.GetInt(status.m_nBeaconSNR);
  parser.GetDouble(status.m_dBeaconFrequency);
  parser.GetInt(status.m_nBeaconBitRate);
  status.m_bBeaconStatusValid = status.m_bStatusUpdated = true;
  return true;
}

// Frequency and whether the receiver tunes by itself, which may be missing:
//   $CRMSK,310.0,A,100,A,5*40
bool CDecoders::CRMSK(CGPSStatusData& status, CString& message) {
  CParser parser(message, ",*", true);
  CString mode;
  parser.SkipField();
  parser.SkipField();
  parser.GetNextString(mode);
  if (mode == "A") status.m_bBeaconAutoTune = true;
  if (mode == "M") status.m_bBeaconAutoTune = false;
  status.m_bBeaconTuneValid = status.m_bStatusUpdated = true;
  return true;
}
