#pragma once

#include <vector>

#include "gpsengine/rawdata/blockreader.h"
#include "gpsengine/rawdata/rawdata.h"

namespace rawdata {

/// Gathers the measurements of one block, and beside each what tells whether its phase goes on.
class EpochBuilder {
 public:
  explicit EpochBuilder(ObservationEpoch& epoch) : m_Epoch(epoch) { m_Locks.reserve(32); }

  /// The moment; half a second beyond the week's ends belongs to the next one. False if there is no such one.
  bool SetTime(int week, double time_of_week);
  /// A measurement with its tracking time in seconds and any number that changes with a slip. Of a signal
  /// that comes twice the stronger stays. False if nothing real can measure so.
  bool Add(const SignalObservation& signal, double lock, unsigned mark);
  /// All have come: settles the slips. False if there are none.
  bool Finish(PhaseHistory& history);

 private:
  struct Lock {
    double seconds;
    unsigned mark;
  };
  ObservationEpoch& m_Epoch;
  std::vector<Lock> m_Locks;
};

// The body of one kind of block, whose head is known to be of that kind, checksum not yet looked at. False if
// it is not whole or holds what cannot be.
///@{
bool DecodeBin96(const BlockReader& block, EpochBuilder& epoch);
bool DecodeBin95(const BlockReader& block, BroadcastEphemeris& ephemeris);
bool DecodeRange(const BlockReader& block, EpochBuilder& epoch);
bool DecodeCompressedRange(const BlockReader& block, EpochBuilder& epoch);
bool DecodeRawEphemeris(const BlockReader& block, BroadcastEphemeris& ephemeris);
bool DecodeGpsEphemeris(const BlockReader& block, BroadcastEphemeris& ephemeris);
///@}

}  // namespace rawdata
