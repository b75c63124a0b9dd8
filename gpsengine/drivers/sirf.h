#pragma once

#include "gpsengine/receiver/gpsreceiver.h"

#pragma GCC visibility push(default)

/// Appends "*" and the checksum of everything after the "$". False if there is no "$".
bool AppendNmeaChecksum(CString& strSentence);

/// Receivers with a SiRF chip set. They run in NMEA mode; only the differential source needs the chip's
/// binary protocol, so that setting it takes the receiver out of NMEA mode and back.
class CSirf : public CGPSReceiver {
  DECLARE_RECEIVER(CSirf)

 public:
  bool ImplementsSetNmea() override { return true; }
  void SetDefaultNMEA() override;
  void SetGgaOnlyNMEA() override;
  bool ImplementsResetAll() override { return true; }
  /// The receiver acknowledges nothing, so the flag has no effect.
  bool ResetAll(bool bWaitForAck) override;
  /// Supports WAAS; any other mode switches the source off.
  void SetDgpsMode(DgpsMode mode) override;

 protected:
  /// Switches a sentence on or off, by the chip's number for it.
  void SetNmeaMsg(int nMessage, bool bOn);
  /// The 15-bit checksum of a binary payload.
  unsigned short CheckSum(unsigned char* pPayload, unsigned short nLength);
  /// Frames a payload and writes it. False if it is too long or was not written.
  bool SendBinaryMsg(unsigned char* pPayload, unsigned short nLength);
  /// From the NMEA mode to the binary one, at the present baud rate.
  void SwitchToBinary();
  /// Sets the source of corrections, in binary mode.
  void SendDgpsSourceMsg(DgpsMode mode);
  /// From the binary mode to the NMEA one, with all sentences off.
  void SwitchToNmea();
};

/// Holux receivers, which have a SiRF chip set.
class CHolux : public CSirf {
  DECLARE_RECEIVER(CHolux)
};

/// The receiver inside a Toughbook, which has a SiRF chip set.
class CToughbookGPS01 : public CSirf {
  DECLARE_RECEIVER(CToughbookGPS01)
};

#pragma GCC visibility pop
