#pragma once

#include <cstdint>

#include "gpsengine/rawdata/rawdata.h"

namespace rawdata {

/// The channel tracking status of an OEM message, taken apart.
struct ChannelStatus {
  explicit ChannelStatus(std::uint32_t status)
      : system(status >> 16 & 7),
        signal(status >> 21 & 31),
        phase_locked((status >> 10 & 1) != 0),
        parity_known((status >> 11 & 1) != 0),
        code_locked((status >> 12 & 1) != 0) {}

  unsigned system, signal;
  bool phase_locked, parity_known, code_locked;
};

/// Names the signal by the channel's status and satellite number, and gives the nominal length of its wave in
/// metres. 0 for what has no name in RINEX 3.04.
double NameSignal(const ChannelStatus& channel, unsigned satellite, SignalObservation& signal);

}  // namespace rawdata
