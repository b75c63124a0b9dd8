#include <numbers>

#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/text/parser.h"

// The $PASHR reports, by their second field. The acknowledgement does not come here.

/// A kind with a payload of fixed size behind the eleven characters of its head.
struct CGPSReceiver::PashrKind {
  const char* pszName;
  int nPayload;
  bool (CGPSReceiver::*pfnDecode)(const void* pPayload);
};

bool CGPSReceiver::ProcessPASHR(CString& strMessage) try {
  static constexpr PashrKind kBinaryKinds[] = {{"PBN", 56, &CGPSReceiver::ProcessPASHR_PBN},
                                               {"MBN", 42, &CGPSReceiver::ProcessPASHR_MBN},
                                               {"SNV", 132, &CGPSReceiver::ProcessPASHR_SNV}};
  CParser parser(strMessage, ",*", true);
  CString name;
  parser.SkipField();
  parser.GetNextString(name);
  for (const PashrKind& kind : kBinaryKinds)
    if (name.CompareNoCase(kind.pszName) == 0) return ProcessPASHR_Binary(kind);
  return name.CompareNoCase("SAT") == 0 && ProcessPASHR_SAT(parser);
} catch (const CException&) {
  Trace("Invalid PASHR,SAT string.\n");
  return false;
}

// The text of the message ends at its first zero byte, so that the payload is read from the attached bytes.
bool CGPSReceiver::ProcessPASHR_Binary(const PashrKind& kind) {
  constexpr int kHead = 11;
  int nLength = 0;
  const char* const pMessage = m_GPSMessageRaw.GetMessageBin(nLength);
  if (kind.pfnDecode == &CGPSReceiver::ProcessPASHR_SNV)
    Trace("SNV_PRoc\n");
  else
    Trace("%s length %d\n", kind.pszName, nLength);
  ++m_nBinaryMessages;
  if (pMessage == nullptr || nLength <= kHead) return false;
  // Behind a port prompt a message of this name is framed as a text, of any length.
  const bool bGood = nLength >= kHead + kind.nPayload && (this->*kind.pfnDecode)(pMessage + kHead);
  if (!bGood) ++m_nBadBinaryMessages;
  return bGood;
}

// Count, and for each satellite its number, azimuth, elevation, signal to noise ratio and "U" if it is used.
// One report has the whole table:
//   $PASHR,SAT,03,04,112,36,47,U,09,301,71,52,U,27,045,08,33,-*2A
bool CGPSReceiver::ProcessPASHR_SAT(CParser& parser) {
  Trace("SAT\n");
  const RecordLock lock = LockRecord();
  parser.GetInt(m_GPSData.m_nSatellitesInView);
  for (CGPSSatelliteData& slot : m_GPSData.m_Satellites) slot.m_bInView = false;

  CGPSSatelliteData satellite;
  int nDegrees = 0, nSlot = 0;
  CString flag;
  for (int i = 0; i < m_GPSData.m_nSatellitesInView; ++i) {
    parser.GetInt(satellite.m_nPRN);
    parser.GetInt(nDegrees);
    satellite.m_dAzimuth = nDegrees * std::numbers::pi / 180.0;
    parser.GetInt(nDegrees);
    satellite.m_dElevation = nDegrees * std::numbers::pi / 180.0;
    parser.GetInt(satellite.m_nSNR);
    parser.GetNextString(flag);
    satellite.m_bUsed = flag.CompareNoCase("U") == 0;
    satellite.m_bInView = true;
    if (!FindSlot(satellite.m_nPRN, nSlot)) continue;
    m_GPSData.m_Satellites[nSlot] = satellite;
    m_GPSData.m_bSatellitesChanged = true;
  }
  ComputeAverageSNR();
  m_GPSData.m_bSatellitesComplete = true;
  return true;
}
