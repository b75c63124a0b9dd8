#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

// Receivers of the Ashtech language: "$PASHS," sets, "$PASHQ," asks. Their raw output is commanded by the
// base class.

/// Receivers of the Ashtech language that have raw data.
class CAshtech : public CGPSReceiver {
  DECLARE_RECEIVER(CAshtech)
};

/// An Ashtech whose heights are orthometric.
class CRacal : public CAshtech {
  DECLARE_RECEIVER(CRacal)
};

/// An Ashtech with a beacon receiver, an elevation mask and a reset.
class CCSI : public CAshtech {
  DECLARE_RECEIVER(CCSI)

 public:
  bool ImplementsResetAll() override { return true; }
  bool ResetAll(bool bWaitForAck) override;

  /// Asks for the receiver's parameters: one report has the NMEA output, the masks and the rest.
  void QueryPAR() { CGPSReceiver::QueryGpsSettings(); }
};

#pragma GCC visibility pop
