#include "gpsengine/drivers/sokkia.h"

namespace {

constexpr CGPSCommand kSetUp[] = {{"$PMCAG,008,15,,,,,,,,,,5,,,,,\r\n", 500}};
constexpr CGPSCommand kQueryElevMask[] = {{"$PMCAG,004,908\r\n", 200}};
constexpr CGPSCommand kDefaultNmea[] = {
    {"$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,1,VTG,1,GSV,1,ZDA,0,RMC,0,GLL,0\r\n", 1000}};
constexpr CGPSCommand kGgaOnlyNmea[] = {
    {"$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,0,VTG,0,GSV,0,ZDA,0,RMC,0,GLL,0\r\n", 1000}};

}  // namespace

bool CSokkia::Initialize() {
  if (!CGPSReceiver::Initialize()) return false;
  WriteRegardless(kSetUp);
  return true;
}

void CSokkia::QuerySatElevMask() {
  Write(kQueryElevMask);
}

void CSokkia::SetSatElevMask(int nDegrees) {
  CString strLine;
  strLine.Format("$PMCAG,008,15,,,,%d,,,,,,,,,,,\r\n", nDegrees);
  Write(strLine, 800);
}

void CSokkia::SetDefaultNMEA() {
  Write(kDefaultNmea);
}

void CSokkia::SetGgaOnlyNMEA() {
  Write(kGgaOnlyNmea);
}

void CSokkia::QueryBeacon() {
  WriteBeaconQuery();
}

void CSokkia::SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) {
  WriteBeacon(mode, strFrequency, strBitRate);
}
