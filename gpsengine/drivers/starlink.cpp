#include "gpsengine/drivers/starlink.h"

#include "gpsengine/platform/clock.h"

namespace {

constexpr CGPSCommand kDefaultNmea[] = {
    {"$PSLIS,NME,ALL,A,OFF\r\n", 200}, {"$PSLIS,NME,GGA,A,ON\r\n", 200}, {"$PSLIS,NME,GSA,A,ON\r\n", 200},
    {"$PSLIS,NME,VTG,A,ON\r\n", 200},  {"$PSLIS,NME,GSV,A,ON\r\n", 200},
};
constexpr CGPSCommand kGgaOnlyNmea[] = {
    {"$PSLIS,NME,ALL,A,OFF\r\n", 200},
    {"$PSLIS,NME,GGA,A,ON\r\n", 200},
};
constexpr CGPSCommand kQueryBeacon[] = {{"$PSLIQ,NME,MSS\r\n", 200}, {"$PSLIQ,NME,MSK\r\n", 200}};
constexpr CGPSCommand kQueryPar[] = {{"$PSLIQ,PAR\r\n", 500}};
constexpr CGPSCommand kReset = {"$PSLIS,RST,CLR\r\n", 100};
constexpr DWORD kRestartTime = 5000;

}  // namespace

void CStarlink::SetDefaultNMEA() {
  Write(kDefaultNmea);
}

void CStarlink::SetGgaOnlyNMEA() {
  Write(kGgaOnlyNmea);
}

void CStarlink::QueryBeacon() {
  Write(kQueryBeacon);
}

void CStarlink::QueryPAR() {
  Write(kQueryPar);
}

void CStarlink::SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) {
  WriteBeacon(mode, strFrequency, strBitRate);
}

void CStarlink::SetSatElevMask(int nDegrees) {
  CString strLine;
  strLine.Format("$PSLIS,ELM,%-d\r\n", nDegrees);
  Write(strLine, 200);
}

bool CStarlink::ResetAll(bool) {
  if (!Initialize() || !m_Port.IsOpen()) return false;
  const bool bWritten = WriteAck(kReset.pszLine, false, static_cast<int>(kReset.nWait));
  Sleep(kRestartTime);
  SetDefaultNMEA();
  return bWritten;
}
