#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

/// Sokkia Axis receivers, commanded by "$PMCAG," sentences.
class CSokkia : public CGPSReceiver {
  DECLARE_DYNAMIC(CSokkia)

 public:
  CString GetName() override { return "Sokkia Axis"; }
  bool Initialize() override;
  bool ImplementsBeacon() override { return true; }
  void QueryBeacon() override;
  void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) override;
  bool ImplementsSetElevMask() override { return true; }
  void QuerySatElevMask() override;
  void SetSatElevMask(int nDegrees) override;
  bool ImplementsSetNmea() override { return true; }
  void SetDefaultNMEA() override;
  void SetGgaOnlyNMEA() override;
};

#pragma GCC visibility pop
