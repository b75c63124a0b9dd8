#include <cmath>

#include "gpsengine/rawdata/decoders.h"
#include "gpsengine/rawdata/navigation.h"
#include "gpsengine/rawdata/oemmessage.h"

// RAWEPHEM has the subframes of an ephemeris as a satellite sends them, GPSEPHEM what they say.

namespace rawdata {

namespace {

struct Term {
  double CGPSDataEphemeris::*term;
  std::size_t at;
  double unit;
};
constexpr Term kTerms[] = {
    {&CGPSDataEphemeris::m_dDeltaN, 48, kGpsPi},    {&CGPSDataEphemeris::m_dM0, 56, kGpsPi},
    {&CGPSDataEphemeris::m_dEccentricity, 64, 1.0}, {&CGPSDataEphemeris::m_dOmega, 72, kGpsPi},
    {&CGPSDataEphemeris::m_dCuc, 80, 1.0},          {&CGPSDataEphemeris::m_dCus, 88, 1.0},
    {&CGPSDataEphemeris::m_dCrc, 96, 1.0},          {&CGPSDataEphemeris::m_dCrs, 104, 1.0},
    {&CGPSDataEphemeris::m_dCic, 112, 1.0},         {&CGPSDataEphemeris::m_dCis, 120, 1.0},
    {&CGPSDataEphemeris::m_dI0, 128, kGpsPi},       {&CGPSDataEphemeris::m_dIDot, 136, kGpsPi},
    {&CGPSDataEphemeris::m_dOmega0, 144, kGpsPi},   {&CGPSDataEphemeris::m_dOmegaDot, 152, kGpsPi},
    {&CGPSDataEphemeris::m_dTgd, 172, 1.0},         {&CGPSDataEphemeris::m_dAf0, 180, 1.0},
    {&CGPSDataEphemeris::m_dAf1, 188, 1.0},         {&CGPSDataEphemeris::m_dAf2, 196, 1.0},
};

// Numbers of GPSEPHEM, by their place in the body.
class Fields {
 public:
  explicit Fields(const BlockReader& block, std::size_t at) : m_Block(block), m_At(at) {}

  std::uint32_t Whole(std::size_t at) const { return m_Block.At<std::uint32_t>(m_At + at); }
  std::int32_t Int(std::size_t at) const { return static_cast<std::int32_t>(Whole(at)); }
  double Real(std::size_t at) const { return m_Block.At<double>(m_At + at); }
  // A second of the week, or below 0 for what is none.
  std::int32_t Seconds(std::size_t at) const {
    const double value = Real(at);
    return value >= 0.0 && value < kSecondsOfWeek ? static_cast<std::int32_t>(value) : -1;
  }

 private:
  const BlockReader& m_Block;
  const std::size_t m_At;
};

}  // namespace

// Satellite, week and second of the reference time, and three subframes of 30 bytes without parity. The week
// that is broadcast has ten bits of the whole one.
bool DecodeRawEphemeris(const BlockReader& block, BroadcastEphemeris& ephemeris) {
  const OemBody body = FindBody(block);
  if (body.at == 0 || body.length < 102) return false;
  Subframes subframes;
  std::size_t at = body.at + 12;
  for (auto& subframe : subframes) {
    for (std::uint32_t& word : subframe) {
      word = static_cast<std::uint32_t>(block.Byte(at) << 16 | block.Byte(at + 1) << 8 | block.Byte(at + 2));
      at += 3;
    }
  }
  BroadcastEphemeris read;
  if (!ReadSubframes(block.At<std::uint32_t>(body.at), subframes, read)) return false;
  constexpr int kRound = 1024;
  const auto reference = static_cast<int>(block.At<std::uint32_t>(body.at + 4) & 0x7FFF);
  const int rounds = static_cast<int>(std::lround((reference - read.orbit.m_nWeek) / double{kRound}));
  read.orbit.m_nWeek = static_cast<std::int16_t>(read.orbit.m_nWeek + rounds * kRound);
  if (read.orbit.m_nWeek <= 0) return false;
  ephemeris = read;
  return true;
}

// The same already taken apart, with angles in radians.
bool DecodeGpsEphemeris(const BlockReader& block, BroadcastEphemeris& ephemeris) {
  const OemBody body = FindBody(block);
  if (body.at == 0 || body.length < 224) return false;
  const Fields in(block, body.at);
  const std::uint32_t prn = in.Whole(0), issue = in.Whole(16), week = in.Whole(28),
                      clock_issue = in.Whole(160);
  if (!IsGpsSatellite(prn) || week == 0 || week > 0x7FFF) return false;
  if (issue != in.Whole(20) || issue != (clock_issue & 0xFF) || clock_issue > 0x3FF) return false;

  BroadcastEphemeris read;
  CGPSDataEphemeris& orbit = read.orbit;
  orbit.m_nPRN = static_cast<std::int16_t>(prn);
  orbit.m_nWeek = static_cast<std::int16_t>(week);
  orbit.m_lTow = in.Seconds(4);
  orbit.m_lToe = in.Seconds(32);
  orbit.m_lToc = in.Seconds(164);
  orbit.m_lAode = in.Int(16);
  orbit.m_lAodc = in.Int(160);
  orbit.m_dSqrtA = std::sqrt(in.Real(40));
  for (const auto& [term, at, unit] : kTerms) {
    orbit.*term = in.Real(at) / unit;
    if (!std::isfinite(orbit.*term)) return false;
  }
  read.health = in.Int(12) & 0x3F;
  const double variance = in.Real(216);
  if (variance >= 0.0 && std::isfinite(variance)) read.accuracy = std::sqrt(variance);
  if (!IsPossible(orbit)) return false;
  ephemeris = read;
  return true;
}

}  // namespace rawdata
