#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

// Models that are a row and nothing else. The library only listens to most of them.

/// Garmin GPS 17-N.
class CGarmin : public CGPSReceiver {
  DECLARE_RECEIVER(CGarmin)
};

/// Javad receivers, in their NMEA output.
class CJavad : public CGPSReceiver {
  DECLARE_RECEIVER(CJavad)
};

/// Leica receivers: "$PMVXG," commands set the NMEA output at every start; a keep-alive is sent on a silent
/// line.
class CLeica : public CGPSReceiver {
  DECLARE_RECEIVER(CLeica)
};

/// Omnistar receivers, in their NMEA output.
class COmnistar : public CGPSReceiver {
  DECLARE_RECEIVER(COmnistar)
};

/// Satloc receivers, in their NMEA output.
class CSatloc : public CGPSReceiver {
  DECLARE_RECEIVER(CSatloc)
};

/// Sokkia Axis receivers, commanded by "$PMCAG," sentences.
class CSokkia : public CGPSReceiver {
  DECLARE_RECEIVER(CSokkia)
};

/// Trimble receivers; a keep-alive is sent on a silent line.
class CTrimble : public CGPSReceiver {
  DECLARE_RECEIVER(CTrimble)
};

/// The receiver inside a Trimble Pocket.
class CTrimblePocketGps : public CGPSReceiver {
  DECLARE_RECEIVER(CTrimblePocketGps)
};

/// Any receiver that sends plain NMEA.
class COtherGps : public CGPSReceiver {
  DECLARE_RECEIVER(COtherGps)
};

#pragma GCC visibility pop
