#include "gpsengine/drivers/ashtech.h"

#include "gpsengine/platform/clock.h"

namespace {

constexpr CGPSCommand kDefaultNmea[] = {
    {"$PASHS,NME,ALL,A,OFF\r\n", 200}, {"$PASHS,NME,GGA,A,ON\r\n", 200}, {"$PASHS,NME,GSA,A,ON\r\n", 200},
    {"$PASHS,NME,VTG,A,ON\r\n", 200},  {"$PASHS,NME,SAT,A,ON\r\n", 200}, {"$PASHS,NME,GSV,A,ON\r\n", 200},
};
constexpr CGPSCommand kGgaOnlyNmea[] = {
    {"$PASHS,NME,ALL,A,OFF\r\n", 200},
    {"$PASHS,NME,GGA,A,ON\r\n", 200},
};
constexpr CGPSCommand kQueryPar[] = {{"$PASHQ,PAR\r\n", 500}};

// The reset, each line with the time for its acknowledgement.
constexpr CGPSCommand kReset = {"$PASHS,RST\r\n", 10000};
constexpr DWORD kRestartTime = 3000;
constexpr CGPSCommand kSetUp[] = {
    {"$PASHS,RTC,AUT,Y\r\n", 1000},    {"$PASHS,RTC,REM,B\r\n", 1000},    {"$PASHS,NME,GGA,A,ON\r\n", 1000},
    {"$PASHS,NME,GSA,A,ON\r\n", 1000}, {"$PASHS,NME,VTG,A,ON\r\n", 1000}, {"$PASHS,NME,SAT,A,ON\r\n", 1000},
    {"$PASHS,PDP,14\r\n", 1000},       {"$PASHS,HDP,10\r\n", 1000},       {"$PASHS,VDP,10\r\n", 1000},
    {"$PASHS,SAV,Y\r\n", 1000},
};

}  // namespace

void CAshtech::SetDefaultNMEA() {
  Write(kDefaultNmea);
}

void CAshtech::SetGgaOnlyNMEA() {
  Write(kGgaOnlyNmea);
}

void CCSI::QueryPAR() {
  Write(kQueryPar);
}

void CCSI::QueryBeacon() {
  WriteBeaconQuery();
}

void CCSI::SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) {
  WriteBeacon(mode, strFrequency, strBitRate);
}

void CCSI::SetSatElevMask(int nDegrees) {
  CString strLine;
  strLine.Format("$PASHS,PEM,%-d\r\n", nDegrees);
  Write(strLine, 200);
}

bool CCSI::ResetAll(bool bWaitForAck) {
  if (!Initialize() || !m_Port.IsOpen()) return false;
  const auto write = [&](const CGPSCommand& command) {
    return WriteAck(command.pszLine, bWaitForAck, static_cast<int>(command.nWait));
  };
  // A line that fails does not keep the rest from the receiver.
  bool bAllWritten = write(kReset);
  Sleep(kRestartTime);
  for (const CGPSCommand& command : kSetUp) bAllWritten &= write(command);
  return bAllWritten;
}
