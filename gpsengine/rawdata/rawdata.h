#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "gpsengine/platform/containers.h"
#include "gpsengine/records/gpsdataraw.h"

#pragma GCC visibility push(default)

/// Measurements and ephemerides out of the blocks that the library hands on as words: a host calls these with
/// what it finds in CGPSReceiver::m_BinWords when WM_GPS_NEW_BIN arrives. All are pure functions of what they
/// are given, for any thread. They refuse a block that is short, fails its checksum or holds what no receiver
/// can have measured.
namespace rawdata {

/// Where a block comes from.
enum class Family : std::uint8_t {
  none,  ///< No block that is known here.
  bin,   ///< "$BIN", of receivers of the "$J" language. The checksum is a sum of bytes, which is weak.
  oem,   ///< Binary messages that begin with AA 44 12, of OEM4 and later receivers, with a CRC-32.
};

/// What a block is, by its head alone.
struct BlockHead {
  Family family = Family::none;  ///< Where it comes from.
  int number = 0;                ///< Of the block or message, 0 to 65535.
};

/// What a block's number stands for.
enum class Content : std::uint8_t {
  unknown,       ///< Nothing that is decoded here.
  observations,  ///< $BIN 96, RANGE (43), RANGECMP (140).
  ephemeris,     ///< $BIN 95, RAWEPHEM (41), GPSEPHEM (7).
};

/// One signal of one satellite. What was not measured is 0.
struct SignalObservation {
  char system = 'G';  ///< As RINEX 3 has it: G GPS, R GLONASS, E Galileo, C BeiDou, J QZSS, S SBAS, I NavIC.
  int satellite = 0;  ///< As RINEX has it: PRN or slot, SBAS less 100, QZSS less 192.
  char code[3] = "";  ///< Band and attribute of RINEX 3.04, as "1C".
  double pseudorange = 0.0;    ///< Metres, 1e6 up to 1e8.
  double carrier_phase = 0.0;  ///< Cycles, which grow with the range, and differ from it by any constant.
  double doppler = 0.0;        ///< Hertz, positive on approach.
  double cn0 = 0.0;            ///< dB-Hz.
  bool slip = true;  ///< The phase is not known to go on from the epoch before: a new ambiguity begins.
  bool half_cycle = false;             ///< The phase may be off by half a cycle.
  std::optional<int> glonass_channel;  ///< Frequency number, -7 up to 6, where the receiver tells it.
};

/// What a receiver measured at one reading of its clock.
struct ObservationEpoch {
  int week = 0;               ///< GPS week, as the receiver tells it: old ones begin again after 1,024 weeks.
  double time_of_week = 0.0;  ///< GPS seconds, 0 up to 604800.
  std::vector<SignalObservation> signals;  ///< In the receiver's order, each signal once.
};

/// What one epoch has to know of those before it: whether a phase goes on. Keep one for a stream, and begin
/// with a new one when the receiver or the recording is another. A value that may be copied.
class PhaseHistory {
 public:
  /// Whether the phase goes on from the last epoch that had it, and remembers this epoch. `lock` is the time
  /// in seconds that the signal has been tracked, `mark` any number that changes with a slip.
  bool Continues(const SignalObservation& signal, const ObservationEpoch& epoch, double lock, unsigned mark);

 private:
  struct Last {
    char system;
    std::int16_t satellite;
    char code[3];
    unsigned mark;
    double moment;  // seconds since week 0
  };
  std::vector<Last> m_Signals;  // one of each signal that was ever seen
  std::size_t m_nNext = 0;      // where the next signal stands if this epoch has those of the last one
};

/// One GPS satellite's ephemeris, and what the navigation message says beside the orbit.
struct BroadcastEphemeris {
  CGPSDataEphemeris orbit;  ///< m_nWeek is that of m_lTow, the moment at which it was sent; ten bits of $BIN.
  double accuracy = 0.0;    ///< Of the user's range, metres.
  int health = 0;           ///< Six bits, 0 for all is well.
  int codes_on_l2 = 0;      ///< 0 where the block does not tell it.
  bool l2p_without_data = false;  ///< The P code on L2 carries no navigation message.
  bool long_fit = false;  ///< Fitted over more than four hours; false where the block does not tell it.
};

/// The words of a block in a row.
inline std::span<const WORD> WordsOf(const CWordArray& words) {
  return {words.GetData(), static_cast<std::size_t>(words.GetSize())};
}

/// Which block this is. Family::none if it begins like none; the rest of it is not looked at.
BlockHead ReadHead(std::span<const WORD> block);

/// What the block with that head holds.
Content ContentOf(const BlockHead& head);

/// The measurements of a block. False, with `epoch` empty and `history` untouched, unless the block is a
/// good one that holds at least one measurement.
bool DecodeObservations(std::span<const WORD> block, PhaseHistory& history, ObservationEpoch& epoch);

/// The ephemeris of a block, by IS-GPS-200. False, with `ephemeris` untouched, unless the block is a good one
/// whose subframes belong together.
bool DecodeEphemeris(std::span<const WORD> block, BroadcastEphemeris& ephemeris);

/// The C/A code measurements of GPS satellites as the record of Ashtech receivers has them, without position
/// and clock; m_nSignalCount in dB-Hz. False, with `raw` empty but for its times, if there are none. The
/// record has room for 11 satellites: the weakest stay out.
bool ToDataRaw(const ObservationEpoch& epoch, CGPSDataRaw& raw);

}  // namespace rawdata

#pragma GCC visibility pop
