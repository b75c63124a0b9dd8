#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

/// An L-band receiver that takes plain command lines and answers with "#" logs. It gets its NMEA output at
/// every start.
class Cgsr2650lb : public CGPSReceiver {
  DECLARE_DYNAMIC(Cgsr2650lb)

 public:
  Cgsr2650lb();

  bool EnablePostProcessing(bool bOn) override;
  /// In whole seconds: what is behind the point is cut off. Lost while the raw logs are off, which then go on
  /// at one second.
  bool SetRawDataOutputInterval(double dInterval) override;
  CString GetName() override { return "GSR2650 LB"; }
  bool HasRawData() override { return true; }
  int GetDefaultBaudrate() override { return 9600; }
  bool Initialize() override;
  bool ImplementsQueryNmea() override { return true; }
  void QueryNmeaActive() override;
  bool ImplementsQueryGpsSettings() override { return false; }
  void QueryGpsSettings() override { QuerySatElevMask(); }
  bool ImplementsBeacon() override { return false; }
  void QueryBeacon() override;
  /// Every source on automatic, whatever the arguments.
  void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) override;
  bool ImplementsSetElevMask() override { return true; }
  void QuerySatElevMask() override;
  void SetSatElevMask(int nDegrees) override;
  bool ImplementsSetNmea() override { return true; }
  void SetDefaultNMEA() override;
  void SetGgaOnlyNMEA() override;
  bool ImplementsResetAll() override { return true; }
  bool ResetAll(bool bWaitForAck) override;
  bool HasDGPSSupport() const override { return true; }
  void QueryDgpsMode() override;
  void SetDgpsMode(DgpsMode mode) override;
  void QueryOmniStar() override;
  void DgpsStatusMsg(bool) override {}
  void QueryLbandSatellites() override { QueryOmniStar(); }
  /// Frequency 0 is the automatic choice.
  void SetLbandFrequency(double dFrequency, int nBitRate) override;
  /// Sets a user datum.
  void SendCorrection() override;
  /// 0 to 3000 MHz, in whole MHz.
  void ChangeCDGPS_Freq(double dFrequency) override;
  void QueryWAAS() override;

  /// The raw logs on, with a period in seconds, or off.
  void SetRawDataOutput(bool bOn, int nPeriod);

 private:
  void ForgetSource();  // what has been reported of the differential source

  bool m_bRawDataOutput;   // by the last SetRawDataOutput, not by the receiver
  int m_nRawDataInterval;  // seconds
};

#pragma GCC visibility pop
