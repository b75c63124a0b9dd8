#include <cmath>

#include "gpsengine/rawdata/decoders.h"
#include "gpsengine/rawdata/oemmessage.h"
#include "gpsengine/rawdata/oemsignals.h"

// RANGE and RANGECMP: the measurements of all signals at one reading of the receiver's clock.

namespace rawdata {

namespace {

// Measurements are as good as the receiver's clock: nothing before it has been set.
bool TakeTime(const BlockReader& block, EpochBuilder& epoch) {
  constexpr unsigned kCoarseAdjusting = 80;
  const int week = block.At<std::uint16_t>(14);
  return block.Byte(13) >= kCoarseAdjusting && week > 0 &&
         epoch.SetTime(week, block.At<std::uint32_t>(16) / 1000.0);
}

// A count of observations, then `size` bytes for each.
template <bool (*add)(const BlockReader& block, std::size_t at, EpochBuilder& epoch)>
bool AddAll(const BlockReader& block, std::size_t size, EpochBuilder& epoch) {
  const OemBody body = FindBody(block);
  if (body.at == 0 || body.length < 4 || !TakeTime(block, epoch)) return false;
  const std::size_t count = block.At<std::uint32_t>(body.at);
  if (count > (body.length - 4) / size) return false;
  for (std::size_t i = 0; i < count; ++i) {
    if (!add(block, body.at + 4 + i * size, epoch)) return false;
  }
  return true;
}

// Receivers count the phase against the range, RINEX with it. What is not locked was not measured.
bool AddMeasured(const ChannelStatus& channel, double range, double phase, double lock,
                 SignalObservation& signal, EpochBuilder& epoch) {
  signal.pseudorange = channel.code_locked ? range : 0.0;
  signal.carrier_phase = channel.phase_locked ? -phase : 0.0;
  signal.half_cycle = channel.phase_locked && !channel.parity_known;
  if (!channel.phase_locked) signal.doppler = 0.0;
  return epoch.Add(signal, lock, channel.parity_known ? 1 : 0);
}

// An observation of RANGE, 44 bytes.
bool AddRange(const BlockReader& block, std::size_t at, EpochBuilder& epoch) {
  const ChannelStatus channel(block.At<std::uint32_t>(at + 40));
  SignalObservation signal;
  if (NameSignal(channel, block.At<std::uint16_t>(at), signal) == 0.0) return true;
  constexpr int kMiddle = 7, kChannels = 14;
  const int frequency = block.At<std::uint16_t>(at + 2);
  if (signal.system == 'R' && frequency < kChannels) signal.glonass_channel = frequency - kMiddle;
  signal.doppler = block.At<float>(at + 28);
  signal.cn0 = block.At<float>(at + 32);
  return AddMeasured(channel, block.At<double>(at + 4), block.At<double>(at + 16), block.At<float>(at + 36),
                     signal, epoch);
}

// The phase has lost all but its lowest 23 bits before the point, which the range gives back.
double WholePhase(double phase, double range, double wavelength) {
  constexpr double kRound = 8388608.0;
  return phase - kRound * std::round((range / wavelength + phase) / kRound);
}

// An observation of RANGECMP, 24 bytes of fields that begin at any bit.
bool AddCompressedRange(const BlockReader& block, std::size_t at, EpochBuilder& epoch) {
  const ChannelStatus channel(block.At<std::uint32_t>(at));
  SignalObservation signal;
  const double wavelength = NameSignal(channel, block.Byte(at + 17), signal);
  if (wavelength == 0.0) return true;
  const auto rest = block.At<std::uint64_t>(at + 4);  // Doppler in 28 bits, range in 36
  const auto doppler = static_cast<std::int32_t>(static_cast<std::uint32_t>(rest << 4)) >> 4;
  const double range = static_cast<double>(rest >> 28) / 128.0;
  const double phase = block.At<std::int32_t>(at + 12) / 256.0;
  const auto times = block.At<std::uint32_t>(at + 18);  // tracking time in 21 bits, signal in 5
  signal.doppler = doppler / 256.0;
  signal.cn0 = 20.0 + (times >> 21 & 0x1F);
  return AddMeasured(channel, range, WholePhase(phase, range, wavelength), (times & 0x1FFFFF) / 32.0, signal,
                     epoch);
}

}  // namespace

bool DecodeRange(const BlockReader& block, EpochBuilder& epoch) {
  return AddAll<AddRange>(block, 44, epoch);
}

bool DecodeCompressedRange(const BlockReader& block, EpochBuilder& epoch) {
  return AddAll<AddCompressedRange>(block, 24, epoch);
}

}  // namespace rawdata
