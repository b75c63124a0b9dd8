#include "gpsengine/rawdata/navigation.h"

#include <cmath>

// Subframes 1 to 3 by IS-GPS-200, 20.3.3. A word's data are 24 bits; the first two words are the same in all.

namespace rawdata {

namespace {

constexpr std::uint32_t kPreamble = 0x8B;
constexpr std::uint32_t kHandoversInWeek = 100800;

// Bits of a subframe's data, counted from 0 without the parity: word w begins at 24 w.
class Bits {
 public:
  explicit Bits(const std::array<std::uint32_t, 10>& words) : m_Words(words) {}

  std::uint32_t Unsigned(int at, int count) const {
    std::uint64_t value = 0;
    for (int word = at / 24; word <= (at + count - 1) / 24; ++word)
      value = value << 24 | (m_Words[static_cast<std::size_t>(word)] & 0xFFFFFF);
    const int behind = 23 - (at + count - 1) % 24;
    return static_cast<std::uint32_t>(value >> behind & ((std::uint64_t{1} << count) - 1));
  }
  std::int32_t Signed(int at, int count) const {
    const auto shift = 32 - count;
    return static_cast<std::int32_t>(Unsigned(at, count) << shift) >> shift;
  }
  double Scaled(int at, int count, int exponent) const { return std::ldexp(Signed(at, count), exponent); }

  bool IsSubframe(std::uint32_t id) const {
    return Unsigned(0, 8) == kPreamble && Unsigned(43, 3) == id && Handover() < kHandoversInWeek;
  }
  // When the next subframe begins, in steps of six seconds.
  std::uint32_t Handover() const { return Unsigned(24, 17); }

 private:
  const std::array<std::uint32_t, 10>& m_Words;
};

// Metres of an index, the nominal values of 20.3.3.3.1.3.
double AccuracyOf(unsigned index) {
  constexpr double kNominal[] = {2.0, 2.8, 4.0, 5.7, 8.0, 11.3, 16.0};
  return index < std::size(kNominal) ? kNominal[index] : std::ldexp(1.0, static_cast<int>(index) - 2);
}

void ReadClock(const Bits& bits, BroadcastEphemeris& ephemeris) {
  CGPSDataEphemeris& orbit = ephemeris.orbit;
  orbit.m_lTow = static_cast<std::int32_t>(bits.Handover() * 6);
  orbit.m_nWeek = static_cast<std::int16_t>(bits.Unsigned(48, 10));
  ephemeris.codes_on_l2 = static_cast<int>(bits.Unsigned(58, 2));
  ephemeris.accuracy = AccuracyOf(bits.Unsigned(60, 4));
  ephemeris.health = static_cast<int>(bits.Unsigned(64, 6));
  ephemeris.l2p_without_data = bits.Unsigned(72, 1) != 0;
  orbit.m_lAodc = static_cast<std::int32_t>(bits.Unsigned(70, 2) << 8 | bits.Unsigned(168, 8));
  orbit.m_dTgd = bits.Scaled(160, 8, -31);
  orbit.m_lToc = static_cast<std::int32_t>(bits.Unsigned(176, 16) * 16);
  orbit.m_dAf2 = bits.Scaled(192, 8, -55);
  orbit.m_dAf1 = bits.Scaled(200, 16, -43);
  orbit.m_dAf0 = bits.Scaled(216, 22, -31);
}

void ReadOrbit(const Bits& second, const Bits& third, BroadcastEphemeris& ephemeris) {
  CGPSDataEphemeris& orbit = ephemeris.orbit;
  orbit.m_lAode = static_cast<std::int32_t>(second.Unsigned(48, 8));
  orbit.m_dCrs = second.Scaled(56, 16, -5);
  orbit.m_dDeltaN = second.Scaled(72, 16, -43);
  orbit.m_dM0 = second.Scaled(88, 32, -31);
  orbit.m_dCuc = second.Scaled(120, 16, -29);
  orbit.m_dEccentricity = std::ldexp(second.Unsigned(136, 32), -33);
  orbit.m_dCus = second.Scaled(168, 16, -29);
  orbit.m_dSqrtA = std::ldexp(second.Unsigned(184, 32), -19);
  orbit.m_lToe = static_cast<std::int32_t>(second.Unsigned(216, 16) * 16);
  ephemeris.long_fit = second.Unsigned(232, 1) != 0;
  orbit.m_dCic = third.Scaled(48, 16, -29);
  orbit.m_dOmega0 = third.Scaled(64, 32, -31);
  orbit.m_dCis = third.Scaled(96, 16, -29);
  orbit.m_dI0 = third.Scaled(112, 32, -31);
  orbit.m_dCrc = third.Scaled(144, 16, -5);
  orbit.m_dOmega = third.Scaled(160, 32, -31);
  orbit.m_dOmegaDot = third.Scaled(192, 24, -43);
  orbit.m_dIDot = third.Scaled(224, 14, -43);
}

}  // namespace

bool ReadSubframes(unsigned satellite, const Subframes& subframes, BroadcastEphemeris& ephemeris) {
  const Bits first(subframes[0]), second(subframes[1]), third(subframes[2]);
  if (!IsGpsSatellite(satellite)) return false;
  if (!first.IsSubframe(1) || !second.IsSubframe(2) || !third.IsSubframe(3)) return false;
  BroadcastEphemeris read;
  read.orbit.m_nPRN = static_cast<std::int16_t>(satellite);
  ReadClock(first, read);
  ReadOrbit(second, third, read);
  // Subframes of two issues give an orbit that no satellite flies.
  const auto issue = static_cast<std::uint32_t>(read.orbit.m_lAode);
  if (third.Unsigned(216, 8) != issue || first.Unsigned(168, 8) != issue) return false;
  if (!IsPossible(read.orbit)) return false;
  ephemeris = read;
  return true;
}

bool IsPossible(const CGPSDataEphemeris& orbit) {
  const auto is_time = [](std::int32_t seconds) { return seconds >= 0 && seconds < kSecondsOfWeek; };
  // From the highest orbits of the definition's table down to what is inside the earth's atmosphere.
  return is_time(orbit.m_lTow) && is_time(orbit.m_lToc) && is_time(orbit.m_lToe) && orbit.m_dSqrtA > 2530.0 &&
         orbit.m_dSqrtA < 8192.0 && orbit.m_dEccentricity >= 0.0 && orbit.m_dEccentricity < 0.5;
}

}  // namespace rawdata
