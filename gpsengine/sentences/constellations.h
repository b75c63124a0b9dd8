#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace gps {

/// The satellite systems, by gpsd's numbers for them.
enum class Gnss { unknown = -1, gps, sbas, galileo, beidou, imes, qzss, glonass, navic };

/// A satellite by its system and its number in it. Of an unknown system the number is the sentence's own.
struct SatelliteId {
  Gnss system = Gnss::unknown;  ///< Its system.
  int number = 0;               ///< From 1 on; PRN or slot.

  /// By system, then by number.
  auto operator<=>(const SatelliteId&) const = default;
  /// One number for all systems: gpsd's.
  int Prn() const;
  /// The number that sentences have for it.
  int SentenceNumber() const;
  /// For people, as in RINEX: "G05", "E12", "S20" for SBAS 120.
  std::string Name() const;
};

/// What is known of a system.
struct Constellation {
  Gnss system;               ///< Which one.
  std::string_view name;     ///< "GPS", "Galileo" …
  char letter;               ///< In RINEX.
  std::string_view talker;   ///< In sentences about it alone.
  std::string_view talker2;  ///< Another one that receivers have for it.
  int system_id;             ///< In a GSA of NMEA 4.11; 0 for none.
  int last;                  ///< A talker of its own numbers it from 1 to here; 0 if it does not.
  int prn;                   ///< What gpsd adds to the number.
  int sentence_number;       ///< What a sentence of its talker adds to it.
};

/// Null for an unknown system.
const Constellation* FindConstellation(Gnss system);
/// What the talker of a sentence or the system id of a GSA says; unknown if they say nothing.
///@{
Gnss SystemOfTalker(std::string_view talker);
Gnss SystemOfId(int system_id);
///@}

/// The satellite that a number in a sentence stands for; `said` is the system, if the sentence names one.
/// A number tells its system by its range, too.
SatelliteId SatelliteOf(int number, Gnss said = Gnss::unknown);

}  // namespace gps

#pragma GCC visibility pop
