#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

/// Beacon receivers of the Starlink language: "$PSLIS," sets, "$PSLIQ," asks.
class CStarlink : public CGPSReceiver {
  DECLARE_RECEIVER(CStarlink)

 public:
  bool ImplementsResetAll() override { return true; }
  /// The receiver acknowledges nothing, so the flag has no effect.
  bool ResetAll(bool bWaitForAck) override;

  /// Asks for the receiver's parameters: the NMEA output and the elevation mask.
  void QueryPAR() { CGPSReceiver::QueryNmeaActive(); }
};

#pragma GCC visibility pop
