#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

// Models that the library only listens to.

/// Garmin GPS 17-N.
class CGarmin : public CGPSReceiver {
  DECLARE_DYNAMIC(CGarmin)

 public:
  CString GetName() override { return "Garmin 17-N"; }
  int GetDefaultBaudrate() override { return 4800; }
};

/// Javad receivers, in their NMEA output.
class CJavad : public CGPSReceiver {
  DECLARE_DYNAMIC(CJavad)

 public:
  CString GetName() override { return "Javad"; }
};

/// Omnistar receivers, in their NMEA output.
class COmnistar : public CGPSReceiver {
  DECLARE_DYNAMIC(COmnistar)

 public:
  CString GetName() override { return "Omnistar"; }
  int GetDefaultBaudrate() override { return 4800; }
};

/// Satloc receivers, in their NMEA output.
class CSatloc : public CGPSReceiver {
  DECLARE_DYNAMIC(CSatloc)

 public:
  CString GetName() override { return "Satloc"; }
};

/// The receiver inside a Trimble Pocket.
class CTrimblePocketGps : public CGPSReceiver {
  DECLARE_DYNAMIC(CTrimblePocketGps)

 public:
  CString GetName() override { return "Trimble Pocket"; }
};

/// Any receiver that speaks plain NMEA.
class COtherGps : public CGPSReceiver {
  DECLARE_DYNAMIC(COtherGps)

 public:
  CString GetName() override { return "Other"; }
};

#pragma GCC visibility pop
