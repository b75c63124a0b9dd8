#pragma once

#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/receiver/workingstate.h"

/// What a decoder has at hand, while the record lock is held.
struct CDecoding {
  const CGPSReceiver& receiver;
  CWorkingState& state;
  CString& message;

  double AntennaHeight() const { return receiver.m_dAntennaHeight; }
  int GeoidMode() const { return receiver.m_nGeoidMode; }
  /// The signal type of a quality indicator, if the host's own table has one for it.
  bool MapQuality(int quality, int& signal) const;
};

/// The decoders of texts. False says that the message leads to nothing. A field that cannot be read may leave
/// by a CException.
struct CDecoders {
  static bool GGA(const CDecoding& in);
  static bool INGGA(const CDecoding& in);
  static bool GSA(const CDecoding& in);
  static bool GSV(const CDecoding& in);
  static bool VTG(const CDecoding& in);
  /// Keeps a sentence that no other decoder claims.
  static bool Proprietary(CGPSData& data, const CString& message);

  // Reports on a receiver's settings.
  static bool CRMSS(CGPSStatusData& status, CString& message);
  static bool CRMSK(CGPSStatusData& status, CString& message);
  static bool PARPMD(CGPSStatusData& status, CString& message);
  static bool PARPER(CGPSStatusData& status, CString& message);
  static bool PARPEM(CGPSStatusData& status, CString& message);
  static bool PARPRTA(CGPSStatusData& status, CString& message);
  static bool PSLIRParNmea(CGPSStatusData& status, CString& message);
  static bool PSLIRParMode(CGPSStatusData& status, CString& message);
  static bool PMCAG(CGPSStatusData& status, CString& message);
  static bool JSHOW(CGPSStatusData& status, CString& message);
  static bool JiOrJgeoOrRd1(CGPSStatusData& status, CString& message);
  static bool LOGLIST(CGPSStatusData& status, CString& message);
  static bool RXCONFIG(CGPSStatusData& status, CString& message);
  static bool ECUTOFF(CGPSStatusData& status, CString& message);
  static bool OMNIINFO(CGPSStatusData& status, CString& message);
  static bool OMNISTAT(CGPSStatusData& status, CString& message);
  static bool OMNIHPPOS(CGPSStatusData& status, CString& message);
  static bool WAAS1(CGPSStatusData& status, CString& message);
  static bool RTKSOURCE(CGPSStatusData& status, CString& message);
  static bool SBASCONTROL(CGPSStatusData& status, CString& message);
  static bool PSRDIFFSOURCE(CGPSStatusData& status, CString& message);
};
