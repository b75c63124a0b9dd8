#pragma once

#include <cstdint>

#include "gpsengine/link/binbuffer.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/receiver/speedengine.h"
#include "gpsengine/records/gpsdata.h"
#include "gpsengine/records/gpsdataraw.h"

/// What all receivers decode into. There is one, which CGPSReceiver::RecordLock alone leads to.
struct CWorkingState {
  CGPSData record;              ///< What is published next.
  CGPSDataRaw epoch;            ///< The current raw epoch.
  CGPSDataEphemeris ephemeris;  ///< The last one.
  CBinBuffer message;           ///< The bytes of the current message, for its decoder.
  CSpeedEngine speed;           ///< Speed and heading from positions.
  bool computeMotion = true;    ///< No VTG has come: speed is to be computed.
  bool gsaReceived = false;     ///< A GSA has come since the start.
  bool gsvReceived = false;     ///< A group of GSV has come since the start.
  int nextGsv = 1;              ///< Number of the GSV sentence expected next.
  int totalGsv = 0;             ///< Size of the current GSV group.
  double binInterval = 0.2;     ///< Seconds between blocks 95 of a receiver of the $J language: 0.2 or 1.0.
  CShared<bool> monitorNmea = false;    ///< The kinds that arrive are recorded.
  CShared<std::uint32_t> nmeaBits = 0;  ///< The record, bit n for kind n modulo 32.

  /// As it was when the library was loaded.
  void Reset() { *this = {}; }
  /// A new start: no sentence has come that says what others say as well.
  void ForgetSentences() {
    computeMotion = true;
    gsaReceived = gsvReceived = false;
  }

  /// The slot of a satellite, the first empty one, the first one that is not used. False, with `slot`
  /// untouched, if there is none.
  ///@{
  bool GetSatellite(int number, int& slot) const;
  bool GetEmptySatellite(int& slot) const;
  bool GetUnusedSatellite(int& slot) const;
  ///@}
  /// The slot for a satellite by the rule of all three: its own, else an empty one, else an unused one.
  bool FindSlot(int number, int& slot) const;
  /// Works m_dAverageSNR of the record out.
  void ComputeAverageSNR();
};
