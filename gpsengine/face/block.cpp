#include "gpsengine/face/block.h"

#include "gpsengine/rawdata/gpstime.h"

namespace gps {

std::string Block::Name() const {
  if (head.family == rawdata::Family::none) return {};
  return (head.family == rawdata::Family::bin ? "$BIN " : "OEM ") + std::to_string(head.number);
}

Block BlockReader::Read(std::span<const WORD> words) {
  Block block{rawdata::ReadHead(words), 2 * words.size()};
  if (rawdata::DecodeObservations(words, history_, epoch_)) {
    block.epoch = &epoch_;
    if (epoch_.week >= kWeeksOfRound) week_ = epoch_.week;
  } else if (rawdata::DecodeEphemeris(words, ephemeris_)) {
    // Satellites send ten bits of the week, of which the epochs around have the whole.
    auto& week = ephemeris_.orbit.m_nWeek;
    if (week_ > 0) week = static_cast<std::int16_t>(NearestWeek(week, week_));
    block.ephemeris = &ephemeris_;
  }
  return block;
}

std::vector<rawdata::SignalObservation> SignalsOf(const CGPSDataRaw& epoch) {
  constexpr int kLastOfGps = 32;
  std::vector<rawdata::SignalObservation> signals;
  for (int i = 0; i < epoch.GetNumSV(); ++i) {
    CGPSSatelliteDataRaw satellite;
    if (!epoch.GetSatelliteData(satellite, i) || !satellite.m_bValid) continue;
    if (satellite.m_nPRN < 1 || satellite.m_nPRN > kLastOfGps) continue;
    rawdata::SignalObservation& signal = signals.emplace_back();
    signal.satellite = satellite.m_nPRN;
    signal.code[0] = '1', signal.code[1] = 'C';
    signal.pseudorange = satellite.m_dPseudorange;
    signal.carrier_phase = satellite.m_dCarrierPhase;
    signal.doppler = satellite.m_dDoppler;
    signal.cn0 = satellite.m_nSignalCount;
    signal.slip = false;
  }
  return signals;
}

SatelliteId SatelliteOf(const rawdata::SignalObservation& signal) {
  switch (signal.system) {
    case 'G':
      return {Gnss::gps, signal.satellite};
    case 'R':
      return {Gnss::glonass, signal.satellite};
    case 'E':
      return {Gnss::galileo, signal.satellite};
    case 'C':
      return {Gnss::beidou, signal.satellite};
    case 'J':
      return {Gnss::qzss, signal.satellite};
    case 'I':
      return {Gnss::navic, signal.satellite};
    default:
      return {Gnss::sbas, signal.satellite + 100};
  }
}

}  // namespace gps
