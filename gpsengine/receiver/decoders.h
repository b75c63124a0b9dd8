#pragma once

#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/receiver/workingstate.h"

/// What a decoder works on, while the record lock is held.
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
  using Decoder = bool(const CDecoding& in);
  static Decoder GGA, INGGA, GSA, GSV, VTG;

  /// Of a report on the receiver's settings.
  using Report = bool(CGPSStatusData& status, CString& message);
  static Report CRMSS, CRMSK, PARPMD, PARPER, PARPEM, PARPRTA, PSLIRParNmea, PSLIRParMode, PMCAG, JSHOW,
      JiOrJgeoOrRd1, LOGLIST, RXCONFIG, ECUTOFF, OMNIINFO, OMNISTAT, OMNIHPPOS, WAAS1, RTKSOURCE, SBASCONTROL,
      PSRDIFFSOURCE;

  /// Keeps a sentence that no other decoder claims.
  static bool Proprietary(CGPSData& data, const CString& message);
};

/// A decoder's way out of a sentence that lacks a field. A receiver that has no fix sends such sentences all
/// the time, so that this is no exception.
inline bool InvalidSentence(const char* name) {
  Trace("Invalid %s string.\n", name);
  return false;
}
