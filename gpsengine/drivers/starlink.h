#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

/// Beacon receivers of the Starlink language: "$PSLIS," sets, "$PSLIQ," asks.
class CStarlink : public CGPSReceiver {
  DECLARE_DYNAMIC(CStarlink)

 public:
  CString GetName() override { return "Starlink"; }
  bool GGASendsOrthoHeight() override { return true; }
  bool ImplementsQueryNmea() override { return true; }
  void QueryNmeaActive() override { QueryPAR(); }
  bool ImplementsBeacon() override { return true; }
  void QueryBeacon() override;
  void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) override;
  bool ImplementsSetElevMask() override { return true; }
  void QuerySatElevMask() override { QueryPAR(); }
  void SetSatElevMask(int nDegrees) override;
  bool ImplementsSetNmea() override { return true; }
  void SetDefaultNMEA() override;
  void SetGgaOnlyNMEA() override;
  bool ImplementsResetAll() override { return true; }
  /// The receiver acknowledges nothing, so the flag has no effect.
  bool ResetAll(bool bWaitForAck) override;

  /// Asks for the receiver's parameters: the NMEA output and the elevation mask.
  void QueryPAR();
};

#pragma GCC visibility pop
