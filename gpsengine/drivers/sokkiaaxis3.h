#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

/// Receivers of the language whose commands begin with "$J".
class CSokkiaAxis3 : public CGPSReceiver {
  DECLARE_RECEIVER(CSokkiaAxis3)

 public:
  bool EnablePostProcessing(bool bOn) override;
  bool SetRawDataOutputInterval(double dInterval) override;
  void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) override;
  void SetSatElevMask(int nDegrees) override;
  void SetDefaultNMEA() override;
  void SetGgaOnlyNMEA() override;
  /// Also waits on a closed port.
  void SetDgpsMode(DgpsMode mode) override;
  void SetLbandFrequency(double dFrequency, int nBitRate) override;

  /// Switches raw blocks on, at 5 Hz (rate 5) or 1 Hz (any other rate), or off.
  void SetRawDataOutput(bool bOn, int nRate);
  /// Asks for the settings: one report has the NMEA output, the mask and the differential source.
  void QueryJSHOW() { CGPSReceiver::QueryNmeaActive(); }

 private:
  void WriteClosingLine();
};

/// The CSI MAX.
class CCSImax : public CSokkiaAxis3 {
  DECLARE_RECEIVER(CCSImax)
};

#pragma GCC visibility pop
