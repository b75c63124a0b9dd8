#include "gpsengine/drivers/sokkiaaxis3.h"

#include "gpsengine/platform/clock.h"
#include "gpsengine/reports/fields.h"

namespace {

constexpr CGPSCommand kSave[] = {{"$JSAVE\r\n", 2000}};
constexpr CGPSCommand kSaveAtOnce[] = {{"$JSAVE\r\n", 0}};
constexpr DWORD kSettleTime = 500;

constexpr CGPSCommand kDefaultNmea[] = {
    {"$JOFF\r\n", 1000},        {"$JASC,GPGGA,1\r\n", 200}, {"$JASC,GPGSA,1\r\n", 200},
    {"$JASC,GPVTG,1\r\n", 200}, {"$JASC,GPGSV,1\r\n", 200}, {"$JSAVE\r\n", 2000},
};
constexpr CGPSCommand kGgaOnlyNmea[] = {
    {"$JOFF\r\n", 1000},
    {"$JASC,GPGGA,1\r\n", 200},
    {"$JSAVE\r\n", 2000},
};

constexpr double kFastInterval = 0.2, kSlowInterval = 1.0;  // seconds
constexpr int kFastRate = 5;
constexpr CGPSCommand kRawFast[] = {{"$JBIN,96,0.2\r\n", 0}, {"$JBIN,95,0.2\r\n", 0}};
constexpr CGPSCommand kRawSlow[] = {{"$JBIN,96,1\r\n", 0}, {"$JBIN,95,1\r\n", 0}};
constexpr CGPSCommand kRawOff[] = {{"$JBIN,96,0\r\n", 0}, {"$JBIN,95,0\r\n", 0}};
constexpr CGPSCommand kClosingFast[] = {{"$JBIN,95,0.2\r\n", 200}};
constexpr CGPSCommand kClosingSlow[] = {{"$JBIN,95,1\r\n", 200}};

constexpr CGPSCommand kSourceNone[] = {{"$JDIFF,OFF\r\n", 1000}};
constexpr CGPSCommand kSourceBeacon[] = {{"$JDIFF,BEACON\r\n", 1000}};
constexpr CGPSCommand kSourceLband[] = {{"$JAPP,2\r\n", 5000}, {"$JDIFF,LBAND\r\n", 5000}};
constexpr CGPSCommand kSourceWaas[] = {{"$JAPP,1\r\n", 5000}, {"$JDIFF,WAAS\r\n", 5000}};
// By DgpsMode. The receiver has no source of a later mode.
constexpr std::span<const CGPSCommand> kSources[] = {kSourceNone, kSourceBeacon, kSourceLband, kSourceWaas};

constexpr CGPSCommand kQuerySettings[] = {{"$JSHOW\r\n", 200}};
constexpr CGPSCommand kQuerySatellites[] = {{"$JLBEAM\r\n", 200}};
constexpr CGPSCommand kQueryOmniStar[] = {{"$JI\r\n", 200}, {"$JGEO\r\n", 200}};
constexpr CGPSCommand kDgpsStatusOn[] = {{"$JASC,D1,1\r\n", 0}};
constexpr CGPSCommand kDgpsStatusOff[] = {{"$JASC,D1,0\r\n", 0}};

}  // namespace

bool CSokkiaAxis3::Initialize() {
  if (!CGPSReceiver::Initialize()) return false;
  Sleep(kSettleTime);
  return true;
}

// After a save the receiver needs to be told its interval for block 95 again.
void CSokkiaAxis3::WriteClosingLine() {
  Write(s_dBinInterval == kFastInterval ? kClosingFast : kClosingSlow);
}

void CSokkiaAxis3::SetRawDataOutput(bool bOn, int nRate) {
  const bool bFast = nRate == kFastRate;
  if (!Write(!bOn ? kRawOff : bFast ? kRawFast : kRawSlow)) return;
  if (bOn) s_dBinInterval = bFast ? kFastInterval : kSlowInterval;
  Write(kSaveAtOnce);
}

bool CSokkiaAxis3::EnablePostProcessing(bool bOn) {
  SetRawDataOutput(bOn, 1);
  return true;
}

bool CSokkiaAxis3::SetRawDataOutputInterval(double dInterval) {
  int nRate = 0;
  if (!Truncate(dInterval, nRate)) return false;
  SetRawDataOutput(true, nRate);
  return true;
}

void CSokkiaAxis3::SetDefaultNMEA() {
  Write(kDefaultNmea);
  WriteClosingLine();
}

void CSokkiaAxis3::SetGgaOnlyNMEA() {
  Write(kGgaOnlyNmea);
  WriteClosingLine();
}

void CSokkiaAxis3::SetSatElevMask(int nDegrees) {
  CString strLine;
  strLine.Format("$JMASK,%d\r\n", nDegrees);
  Write(strLine, 800);
  Write(kSave);
  WriteClosingLine();
}

void CSokkiaAxis3::SetLbandFrequency(double dFrequency, int nBitRate) {
  CString strLine;
  strLine.Format("$JFREQ,%f,%d\r\n", dFrequency * 1000, nBitRate);
  Write(strLine, 800);
  Write(kSave);
  WriteClosingLine();
}

void CSokkiaAxis3::SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) {
  WriteBeacon(mode, strFrequency, strBitRate);
  Write(kSave);
}

void CSokkiaAxis3::QueryBeacon() {
  WriteBeaconQuery();
}

void CSokkiaAxis3::SetDgpsMode(DgpsMode mode) {
  if (mode >= 0 && mode < static_cast<int>(std::size(kSources))) WriteRegardless(kSources[mode]);
  WriteRegardless(kSave);
}

void CSokkiaAxis3::QueryJSHOW() {
  Write(kQuerySettings);
}

void CSokkiaAxis3::QueryLbandSatellites() {
  Write(kQuerySatellites);
}

void CSokkiaAxis3::QueryOmniStar() {
  Write(kQueryOmniStar);
  QueryJSHOW();
}

void CSokkiaAxis3::DgpsStatusMsg(bool bOn) {
  Write(bOn ? kDgpsStatusOn : kDgpsStatusOff);
}
