#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

// Models that the library only listens to.

class CGarmin : public CGPSReceiver {
  DECLARE_DYNAMIC(CGarmin)

 public:
  CString GetName() override { return "Garmin 17-N"; }
  int GetDefaultBaudrate() override { return 4800; }
};

class CJavad : public CGPSReceiver {
  DECLARE_DYNAMIC(CJavad)

 public:
  CString GetName() override { return "Javad"; }
};

class COmnistar : public CGPSReceiver {
  DECLARE_DYNAMIC(COmnistar)

 public:
  CString GetName() override { return "Omnistar"; }
  int GetDefaultBaudrate() override { return 4800; }
};

class CSatloc : public CGPSReceiver {
  DECLARE_DYNAMIC(CSatloc)

 public:
  CString GetName() override { return "Satloc"; }
};

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
