#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

/// An L-band receiver that takes plain command lines and answers with "#" logs. It gets its NMEA output at
/// every start.
class Cgsr2650lb : public CGPSReceiver {
  DECLARE_RECEIVER(Cgsr2650lb)

 public:
  Cgsr2650lb();

  bool EnablePostProcessing(bool bOn) override;
  /// In whole seconds: what is behind the point is cut off. Lost while the raw logs are off, which then go on
  /// at one second.
  bool SetRawDataOutputInterval(double dInterval) override;
  bool Initialize() override;
  void QueryGpsSettings() override { QuerySatElevMask(); }
  void QueryBeacon() override;
  /// Every source on automatic, whatever the arguments.
  void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) override;
  void QuerySatElevMask() override;
  bool ImplementsResetAll() override { return true; }
  bool ResetAll(bool bWaitForAck) override;
  void QueryDgpsMode() override;
  void SetDgpsMode(DgpsMode mode) override;
  void QueryLbandSatellites() override { QueryOmniStar(); }
  /// Frequency 0 is the automatic choice.
  void SetLbandFrequency(double dFrequency, int nBitRate) override;
  /// 0 to 3000 MHz, in whole MHz.
  void ChangeCDGPS_Freq(double dFrequency) override;

  /// The raw logs on, with a period in seconds, or off.
  void SetRawDataOutput(bool bOn, int nPeriod);

 private:
  void ForgetSource();  // what has been reported of the differential source

  bool m_bRawDataOutput;   // by the last SetRawDataOutput, not by the receiver
  int m_nRawDataInterval;  // seconds
};

#pragma GCC visibility pop
