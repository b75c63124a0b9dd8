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
  /// In whole seconds: fractions are truncated. Not remembered while the raw logs are off; they then start at
  /// one second.
  bool SetRawDataOutputInterval(double dInterval) override;
  bool Initialize() override;
  void QueryGpsSettings() override { QuerySatElevMask(); }
  void QueryBeacon() override;
  /// Sets all sources to automatic; the arguments are ignored.
  void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) override;
  void QuerySatElevMask() override;
  bool ImplementsResetAll() override { return true; }
  bool ResetAll(bool bWaitForAck) override;
  void QueryDgpsMode() override;
  void SetDgpsMode(DgpsMode mode) override;
  void QueryLbandSatellites() override { QueryOmniStar(); }
  /// Frequency 0 selects automatically.
  void SetLbandFrequency(double dFrequency, int nBitRate) override;
  /// 0 to 3000 MHz, in whole MHz.
  void ChangeCDGPS_Freq(double dFrequency) override;

  /// Switches the raw logs on, with a period in seconds, or off.
  void SetRawDataOutput(bool bOn, int nPeriod);

 private:
  void ForgetSource();  // clears the reported differential source

  bool m_bRawDataOutput;   // as last set, not as reported by the receiver
  int m_nRawDataInterval;  // seconds
};

#pragma GCC visibility pop
