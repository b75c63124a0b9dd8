#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

// Receivers of the Ashtech language: "$PASHS," sets, "$PASHQ," asks. Their raw output is commanded by the
// base class.

/// Receivers of the Ashtech language that have raw data.
class CAshtech : public CGPSReceiver {
  DECLARE_DYNAMIC(CAshtech)

 public:
  CString GetName() override { return "Ashtech"; }
  bool HasRawData() override { return true; }
  bool ImplementsSetNmea() override { return true; }
  void SetDefaultNMEA() override;
  void SetGgaOnlyNMEA() override;
};

/// An Ashtech whose heights are orthometric.
class CRacal : public CAshtech {
  DECLARE_DYNAMIC(CRacal)

 public:
  CString GetName() override { return "Racal"; }
  bool GGASendsOrthoHeight() override { return true; }
};

/// An Ashtech with a beacon receiver, an elevation mask and a reset.
class CCSI : public CAshtech {
  DECLARE_DYNAMIC(CCSI)

 public:
  CString GetName() override { return "CSI"; }
  bool ImplementsQueryNmea() override { return true; }
  void QueryNmeaActive() override { QueryPAR(); }
  bool ImplementsQueryGpsSettings() override { return true; }
  void QueryGpsSettings() override { QueryPAR(); }
  bool ImplementsBeacon() override { return true; }
  void QueryBeacon() override;
  void SetBeacon(BEACON_MODE_TYPE mode, CString strFrequency, CString strBitRate) override;
  bool ImplementsSetElevMask() override { return true; }
  void QuerySatElevMask() override { QueryPAR(); }
  void SetSatElevMask(int nDegrees) override;
  bool ImplementsResetAll() override { return true; }
  bool ResetAll(bool bWaitForAck) override;

  /// Asks for the receiver's parameters: one report has the NMEA output, the masks and the rest.
  void QueryPAR();
};

#pragma GCC visibility pop
