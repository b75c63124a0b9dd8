#include <cmath>

#include "gpsengine/rawdata/decoders.h"
#include "gpsengine/rawdata/navigation.h"

// The "$BIN" blocks. After tag, number and length come the data, the sum of their bytes and a line end.

namespace rawdata {

namespace {

constexpr std::size_t kHead = 8;
constexpr double kWavelength = 0.190293672798365;  // of L1, metres

// Whether the block is as long as it says, which has to be `length` bytes of data, and sound.
bool IsWhole(const BlockReader& block, std::size_t length) {
  if (block.Size() < kHead + length + 4 || block.At<std::uint16_t>(6) != length) return false;
  std::uint16_t sum = 0;
  for (std::size_t i = 0; i < length; ++i) sum = static_cast<std::uint16_t>(sum + block.Byte(kHead + i));
  return block.At<std::uint16_t>(kHead + length) == sum &&
         block.At<std::uint16_t>(kHead + length + 2) == ('\r' | '\n' << 8);
}

// GPS and SBAS share the C/A code and its numbers.
bool Identify(unsigned prn, SignalObservation& signal) {
  if (!IsGpsSatellite(prn) && (prn < 120 || prn > 158)) return false;
  signal.system = prn < 120 ? 'G' : 'S';
  signal.satellite = static_cast<int>(prn < 120 ? prn : prn - 100);
  signal.code[0] = '1';
  signal.code[1] = 'C';
  return true;
}

// A channel: satellite, signal, tracking time and slips; a rate with two flags; range; phase.
bool AddChannel(const BlockReader& block, std::size_t at, EpochBuilder& epoch) {
  const auto first = block.At<std::uint32_t>(at);
  const auto second = block.At<std::uint32_t>(at + 4);
  SignalObservation signal;
  if (!Identify(first & 0xFF, signal)) return true;
  const unsigned strength = first >> 8 & 0xFF;
  if (strength > 0) signal.cn0 = 30.0 + 10.0 * std::log10(0.8192 * strength);
  const bool is_long = (second & 2) != 0;
  const double lock = is_long ? kSecondsOfWeek : (first >> 16 & 0xFF) * 0.1;
  const bool has_phase = (second & 1) != 0;
  const double rate = (static_cast<std::int32_t>(second) >> 4) / 4096.0;
  signal.pseudorange = block.At<double>(at + 8);
  if (has_phase) signal.carrier_phase = block.At<double>(at + 16) / kWavelength;
  signal.doppler = -rate / kWavelength;
  return epoch.Add(signal, lock, first >> 24);
}

}  // namespace

// Spare, week and second of the week, then twelve channels of 24 bytes, those not in use with satellite 0.
bool DecodeBin96(const BlockReader& block, EpochBuilder& epoch) {
  constexpr std::size_t kChannels = 12, kChannel = 24, kChannelsAt = 12;
  if (!IsWhole(block, kChannelsAt + kChannels * kChannel)) return false;
  if (!epoch.SetTime(block.At<std::uint16_t>(kHead + 2), block.At<double>(kHead + 4))) return false;
  for (std::size_t i = 0; i < kChannels; ++i) {
    if (!AddChannel(block, kHead + kChannelsAt + i * kChannel, epoch)) return false;
  }
  return true;
}

// Satellite, spare, when it arrived, and three subframes with a word in the low 30 bits of each 32, its
// parity checked and taken out by the receiver.
bool DecodeBin95(const BlockReader& block, BroadcastEphemeris& ephemeris) {
  constexpr std::size_t kWordsAt = kHead + 8;
  if (!IsWhole(block, 128)) return false;
  Subframes subframes;
  std::size_t at = kWordsAt;
  for (auto& subframe : subframes) {
    for (std::uint32_t& word : subframe) {
      word = block.At<std::uint32_t>(at) >> 6 & 0xFFFFFF;
      at += 4;
    }
  }
  return ReadSubframes(block.At<std::uint16_t>(kHead), subframes, ephemeris);
}

}  // namespace rawdata
