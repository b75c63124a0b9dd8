#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

// Receivers that want to hear from the host while the line is silent.

/// Trimble receivers, which get a line of text when theirs is silent.
class CTrimble : public CGPSReceiver {
  DECLARE_DYNAMIC(CTrimble)

 public:
  CString GetName() override { return "Trimble"; }
  bool HasRawData() override { return false; }
  int GetDefaultBaudrate() override { return 4800; }
  void KeepAlive() override;
};

/// Gets a fixed NMEA output at every start, in "$PMVXG," commands.
class CLeica : public CGPSReceiver {
  DECLARE_DYNAMIC(CLeica)

 public:
  CString GetName() override { return "Leica"; }
  bool Initialize() override;
  void KeepAlive() override;
};

#pragma GCC visibility pop
