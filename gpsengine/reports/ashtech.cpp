#include <numbers>

#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/decoders.h"
#include "gpsengine/text/parser.h"

// The $PASHR reports, by their second field. The acknowledgement does not come here.

namespace {

constexpr int kHead = 11;

// Count, and for each satellite its number, azimuth, elevation, signal to noise ratio and "U" if it is used.
// One report has the whole table:
//   $PASHR,SAT,03,04,112,36,47,U,09,301,71,52,U,27,045,08,33,-*2A
bool DecodeSatellites(CWorkingState& state, CParser& parser) {
  Trace("SAT\n");
  CGPSData& data = state.record;
  parser.GetInt(data.m_nSatellitesInView);
  for (CGPSSatelliteData& slot : data.m_Satellites) slot.m_bInView = false;

  CGPSSatelliteData satellite;
  int degrees = 0, slot = 0;
  CString flag;
  for (int i = 0; i < data.m_nSatellitesInView; ++i) {
    parser.GetInt(satellite.m_nPRN);
    parser.GetInt(degrees);
    satellite.m_dAzimuth = degrees * std::numbers::pi / 180.0;
    parser.GetInt(degrees);
    satellite.m_dElevation = degrees * std::numbers::pi / 180.0;
    parser.GetInt(satellite.m_nSNR);
    parser.GetNextString(flag);
    satellite.m_bUsed = flag.CompareNoCase("U") == 0;
    satellite.m_bInView = true;
    if (!state.FindSlot(satellite.m_nPRN, slot)) continue;
    data.m_Satellites[slot] = satellite;
    data.m_bSatellitesChanged = true;
  }
  state.ComputeAverageSNR();
  data.m_bSatellitesComplete = true;
  return true;
}

}  // namespace

bool CGPSReceiver::ProcessPASHR(CString& message) try {
  CParser parser(message, ",*", true);
  CString name;
  parser.SkipField();
  parser.GetNextString(name);
  if (name.CompareNoCase("SAT") == 0) return DecodeSatellites(*RecordLock(), parser);
  if (name.CompareNoCase("PBN") == 0) return DecodePayload("PBN", 56, &CGPSReceiver::ProcessPASHR_PBN);
  if (name.CompareNoCase("MBN") == 0) return DecodePayload("MBN", 42, &CGPSReceiver::ProcessPASHR_MBN);
  if (name.CompareNoCase("SNV") == 0) return DecodePayload("SNV", 132, &CGPSReceiver::ProcessPASHR_SNV);
  return false;
} catch (const CException&) {
  return InvalidSentence("PASHR,SAT");
}

// A payload of fixed size after the head. The text of the message ends at its first zero byte, so that it is
// read from the attached bytes.
bool CGPSReceiver::DecodePayload(const char* name, int size, bool (CGPSReceiver::*decode)(const void*)) {
  int length = 0;
  // Nobody but the thread that decodes replaces these bytes.
  const char* const message = RecordLock()->message.GetMessageBin(length);
  if (decode == &CGPSReceiver::ProcessPASHR_SNV)
    Trace("SNV_PRoc\n");
  else
    Trace("%s length %d\n", name, length);
  ++m_nBinaryMessages;
  if (message == nullptr || length <= kHead) return false;
  // After a port prompt a message of this name is framed as a text, of any length.
  const bool good = length >= kHead + size && (this->*decode)(message + kHead);
  if (!good) ++m_nBadBinaryMessages;
  return good;
}
