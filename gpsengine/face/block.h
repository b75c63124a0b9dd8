#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "gpsengine/rawdata/rawdata.h"
#include "gpsengine/sentences/constellations.h"

#pragma GCC visibility push(default)

namespace gps {

/// A block that the library has handed on as words, and what it holds. That is null where it holds no such
/// thing, or cannot be read.
struct Block {
  rawdata::BlockHead head;                                 ///< Which block it is.
  std::size_t bytes = 0;                                   ///< Its length.
  const rawdata::ObservationEpoch* epoch = nullptr;        ///< Measurements.
  const rawdata::BroadcastEphemeris* ephemeris = nullptr;  ///< An ephemeris.

  /// It holds one of them.
  bool IsRead() const { return epoch != nullptr || ephemeris != nullptr; }
  /// What it is called: "$BIN 96", "OEM 43".
  std::string Name() const;
};

/// Reads the blocks of one receiver in the order in which they come.
class BlockReader {
 public:
  /// The block's content is good until the next one is read.
  Block Read(std::span<const WORD> words);
  /// What comes next is another receiver's.
  void Forget() { *this = BlockReader(); }

 private:
  rawdata::PhaseHistory history_;
  rawdata::ObservationEpoch epoch_;
  rawdata::BroadcastEphemeris ephemeris_;
  int week_ = 0;  // the last one that was told whole
};

/// The signals of an epoch of Ashtech's, of GPS satellites alone: metres, cycles that grow with the range and
/// hertz on approach, as the record has them. It does not say whether a phase goes on.
std::vector<rawdata::SignalObservation> SignalsOf(const CGPSDataRaw& epoch);

/// The satellite of a signal.
SatelliteId SatelliteOf(const rawdata::SignalObservation& signal);

}  // namespace gps

#pragma GCC visibility pop
