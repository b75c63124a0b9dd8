#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

/// Receivers of the language whose commands begin with "$J".
class CSokkiaAxis3 : public CGPSReceiver {
  DECLARE_DYNAMIC(CSokkiaAxis3)

 public:
  bool EnablePostProcessing(bool bOn) override;
  bool SetRawDataOutputInterval(double dInterval) override;
  CString GetName() override { return "Sokkia Axis3"; }
  bool HasRawData() override { return true; }
  bool Initialize() override;
  bool ImplementsQueryNmea() override { return true; }
  void QueryNmeaActive() override { QueryJSHOW(); }
  bool ImplementsBeacon() override { return true; }
  void QueryBeacon() override;
  void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) override;
  bool ImplementsSetElevMask() override { return true; }
  void QuerySatElevMask() override { QueryJSHOW(); }
  void SetSatElevMask(int nDegrees) override;
  bool ImplementsSetNmea() override { return true; }
  void SetDefaultNMEA() override;
  void SetGgaOnlyNMEA() override;
  bool HasDGPSSupport() const override { return true; }
  void QueryDgpsMode() override { QueryJSHOW(); }
  /// The waits run on a closed port too.
  void SetDgpsMode(DgpsMode mode) override;
  void QueryOmniStar() override;
  void DgpsStatusMsg(bool bOn) override;
  void QueryLbandSatellites() override;
  void SetLbandFrequency(double dFrequency, int nBitRate) override;

  /// Raw blocks on, at 5 a second (rate 5) or one a second (any other rate), or off.
  void SetRawDataOutput(bool bOn, int nRate);
  /// Asks for the settings: one report has the NMEA output, the mask and the differential source.
  void QueryJSHOW();

 private:
  void WriteClosingLine();
};

/// The CSI MAX.
class CCSImax : public CSokkiaAxis3 {
  DECLARE_DYNAMIC(CCSImax)

 public:
  CString GetName() override { return "CSI - MAX"; }
  bool HasDGPSSupport() const override { return true; }
};

#pragma GCC visibility pop
