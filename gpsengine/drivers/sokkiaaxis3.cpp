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

constexpr CGPSDriver RowOf(const char* name) {
  return {
      .pszName = name,
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
  const bool fast = RecordLock()->binInterval == kFastInterval;
  Write(fast ? kClosingFast : kClosingSlow);
}

void CSokkiaAxis3::SetRawDataOutput(bool on, int rate) {
  const bool fast = rate == kFastRate;
  if (!Write(!on ? kRawOff : fast ? kRawFast : kRawSlow)) return;
  if (on) RecordLock()->binInterval = fast ? kFastInterval : kSlowInterval;
  Write(kSaveAtOnce);
}

bool CSokkiaAxis3::EnablePostProcessing(bool on) {
  SetRawDataOutput(on, 1);
  return true;
}

bool CSokkiaAxis3::SetRawDataOutputInterval(double interval) {
  int rate = 0;
  if (!Truncate(interval, rate)) return false;
  SetRawDataOutput(true, rate);
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

void CSokkiaAxis3::SetSatElevMask(int degrees) {
  CGPSReceiver::SetSatElevMask(degrees);
  WriteClosingLine();
}

void CSokkiaAxis3::SetLbandFrequency(double frequency, int bit_rate) {
  CString line;
  line.Format("$JFREQ,%f,%d\r\n", frequency * 1000, bit_rate);
  Write(line, 800);
  Write(kSave);
  WriteClosingLine();
}

void CSokkiaAxis3::SetBeacon(BEACON_MODE_TYPE mode, CString frequency, CString bit_rate) {
  CGPSReceiver::SetBeacon(mode, frequency, bit_rate);
  Write(kSave);
}

void CSokkiaAxis3::SetDgpsMode(DgpsMode mode) {
  if (mode >= 0 && mode < static_cast<int>(std::size(kSources))) WriteRegardless(kSources[mode]);
  WriteRegardless(kSave);
}
