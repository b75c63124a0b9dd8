#include "gpsengine/drivers/sokkiaaxis3.h"

#include "gpsengine/receiver/workingstate.h"
#include "gpsengine/reports/fields.h"

namespace {

using enum CGPSCommand::Then;

constexpr CGPSCommand kStart[] = {{"", 500}};
constexpr CGPSCommand kSave[] = {{"$JSAVE\r\n", 2000}};
constexpr CGPSCommand kSaveAtOnce[] = {{"$JSAVE\r\n", 0}};

constexpr CGPSCommand kDefaultNmea[] = {
    {"$JOFF\r\n", 1000, goOn},  {"$JASC,GPGGA,1\r\n", 200}, {"$JASC,GPGSA,1\r\n", 200},
    {"$JASC,GPVTG,1\r\n", 200}, {"$JASC,GPGSV,1\r\n", 200}, {"$JSAVE\r\n", 2000},
};
constexpr CGPSCommand kGgaOnlyNmea[] = {
    {"$JOFF\r\n", 1000, goOn},
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
// Indexed by DgpsMode. Later modes are not supported.
constexpr std::span<const CGPSCommand> kSources[] = {kSourceNone, kSourceBeacon, kSourceLband, kSourceWaas};

constexpr CGPSCommand kElevMask[] = {{"$JMASK,#\r\n", 800}, {"$JSAVE\r\n", 2000}};
constexpr CGPSCommand kQuerySettings[] = {{"$JSHOW\r\n", 200}};
constexpr CGPSCommand kQuerySatellites[] = {{"$JLBEAM\r\n", 200}};
constexpr CGPSCommand kQueryOmniStar[] = {{"$JI\r\n", 200}, {"$JGEO\r\n", 200}, {"$JSHOW\r\n", 200}};
constexpr CGPSCommand kDgpsStatusOn[] = {{"$JASC,D1,1\r\n", 0}};
constexpr CGPSCommand kDgpsStatusOff[] = {{"$JASC,D1,0\r\n", 0}};

constexpr CGPSDriver RowOf(const char* pszName) {
  return {
      .pszName = pszName,
      .bRawData = true,
      .bDgps = true,
      .start = kStart,
      .defaultNmea = kDefaultNmea,
      .ggaOnlyNmea = kGgaOnlyNmea,
      .queryNmea = kQuerySettings,
      .queryBeacon = CGPSDriver::kQueryBeacon,
      .queryElevMask = kQuerySettings,
      .setElevMask = kElevMask,
      .queryDgps = kQuerySettings,
      .queryOmniStar = kQueryOmniStar,
      .queryLband = kQuerySatellites,
      .dgpsStatusOn = kDgpsStatusOn,
      .dgpsStatusOff = kDgpsStatusOff,
  };
}

}  // namespace

constinit const CGPSDriver CSokkiaAxis3::s_Driver = RowOf("Sokkia Axis3");
constinit const CGPSDriver CCSImax::s_Driver = RowOf("CSI - MAX");

// After a save the interval of block 95 has to be set again.
void CSokkiaAxis3::WriteClosingLine() {
  const bool bFast = RecordLock()->binInterval == kFastInterval;
  Write(bFast ? kClosingFast : kClosingSlow);
}

void CSokkiaAxis3::SetRawDataOutput(bool bOn, int nRate) {
  const bool bFast = nRate == kFastRate;
  if (!Write(!bOn ? kRawOff : bFast ? kRawFast : kRawSlow)) return;
  if (bOn) RecordLock()->binInterval = bFast ? kFastInterval : kSlowInterval;
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
  CGPSReceiver::SetDefaultNMEA();
  WriteClosingLine();
}

void CSokkiaAxis3::SetGgaOnlyNMEA() {
  CGPSReceiver::SetGgaOnlyNMEA();
  WriteClosingLine();
}

void CSokkiaAxis3::SetSatElevMask(int nDegrees) {
  CGPSReceiver::SetSatElevMask(nDegrees);
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
  CGPSReceiver::SetBeacon(mode, strFrequency, strBitRate);
  Write(kSave);
}

void CSokkiaAxis3::SetDgpsMode(DgpsMode mode) {
  if (mode >= 0 && mode < static_cast<int>(std::size(kSources))) WriteRegardless(kSources[mode]);
  WriteRegardless(kSave);
}

void CSokkiaAxis3::QueryJSHOW() {
  Write(kQuerySettings);
}
