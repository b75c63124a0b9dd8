#include "gpsengine/rawdata/oemsignals.h"

#include <algorithm>
#include <iterator>

namespace rawdata {

namespace {

constexpr double kSpeedOfLight = 299792458.0;

// Satellite systems by their number in the status, with the numbers of their satellites.
struct System {
  char letter;
  unsigned first, last;
  int offset;  // from the receiver's number to that of RINEX
};
constexpr System kSystems[] = {
    {'G', 1, 32, 0}, {'R', 38, 61, -37},    {'S', 120, 158, -100}, {'E', 1, 36, 0},
    {'C', 1, 63, 0}, {'J', 193, 202, -192}, {'I', 1, 14, 0},
};

struct Signal {
  char system;
  unsigned number;  // in the status
  char code[3];
  double megahertz;
};
constexpr double kL1 = 1575.42, kL2 = 1227.60, kL5 = 1176.45, kL6 = 1278.75;
constexpr double kG1 = 1602.0, kG2 = 1246.0, kG3 = 1202.025;  // GLONASS, of the channel in the middle
constexpr double kB1 = 1561.098, kB2 = 1207.14, kB3 = 1268.52, kE5 = 1191.795;
constexpr Signal kSignals[] = {
    {'G', 0, "1C", kL1},  {'G', 5, "2P", kL2},  {'G', 9, "2W", kL2},  {'G', 14, "5Q", kL5},
    {'G', 16, "1L", kL1}, {'G', 17, "2S", kL2}, {'R', 0, "1C", kG1},  {'R', 1, "2C", kG2},
    {'R', 5, "2P", kG2},  {'R', 6, "3Q", kG3},  {'S', 0, "1C", kL1},  {'S', 6, "5I", kL5},
    {'E', 1, "1B", kL1},  {'E', 2, "1C", kL1},  {'E', 6, "6B", kL6},  {'E', 7, "6C", kL6},
    {'E', 12, "5Q", kL5}, {'E', 17, "7Q", kB2}, {'E', 20, "8Q", kE5}, {'C', 0, "2I", kB1},
    {'C', 1, "7I", kB2},  {'C', 2, "6I", kB3},  {'C', 4, "2I", kB1},  {'C', 5, "7I", kB2},
    {'C', 6, "6I", kB3},  {'C', 7, "1P", kL1},  {'C', 9, "5P", kL5},  {'C', 11, "7D", kB2},
    {'J', 0, "1C", kL1},  {'J', 14, "5Q", kL5}, {'J', 16, "1L", kL1}, {'J', 17, "2S", kL2},
    {'J', 27, "6L", kL6}, {'I', 0, "5A", kL5},
};

}  // namespace

double NameSignal(const ChannelStatus& channel, unsigned satellite, SignalObservation& signal) {
  if (channel.system >= std::size(kSystems)) return 0.0;
  const System& system = kSystems[channel.system];
  if (satellite < system.first || satellite > system.last) return 0.0;
  const auto* known = std::find_if(std::begin(kSignals), std::end(kSignals), [&](const Signal& candidate) {
    return candidate.system == system.letter && candidate.number == channel.signal;
  });
  if (known == std::end(kSignals)) return 0.0;
  signal.system = system.letter;
  signal.satellite = static_cast<int>(satellite) + system.offset;
  std::copy(std::begin(known->code), std::end(known->code), signal.code);
  return kSpeedOfLight / (known->megahertz * 1e6);
}

}  // namespace rawdata
