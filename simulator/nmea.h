#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/receiver.h"
#include "simulator/sky.h"

namespace simulator {

/// All that a report may speak of at one moment.
struct Epoch {
  double seconds = 0;  ///< since the start of the run
  std::chrono::sys_time<std::chrono::milliseconds> utc;
  Truth truth;
  std::vector<View> views;
  Dilution dilution;
  int quality = 1;  ///< GGA indicator; 0 with under four satellites used
  double geoid_separation = 0;
  int minute_digits = 5;  ///< decimals of latitude and longitude in GGA
};

/// Satellites that take part in the fix.
int UsedCount(const std::vector<View>& views);

/// "$", the body, the checksum and the line end.
std::string Sentence(std::string_view body);

/// Exclusive or of all characters.
unsigned char Xor(std::string_view text);

// Sentences of NMEA 0183, each whole with its line end; GSV is the whole group.
std::string Gga(const Epoch& epoch);
std::string Gsa(const Epoch& epoch);
std::string Gsv(const Epoch& epoch);
std::string Vtg(const Epoch& epoch);
std::string Rmc(const Epoch& epoch);
std::string Gll(const Epoch& epoch);
std::string Zda(const Epoch& epoch);

}  // namespace simulator
