#include <algorithm>
#include <cmath>
#include <cstring>

#include "gpsengine/rawdata/decoders.h"
#include "gpsengine/rawdata/navigation.h"

namespace rawdata {

namespace {

// Receivers tell how long they have tracked in steps of up to a tenth of a second.
constexpr double kLockStep = 0.11;

// What is beyond these, no receiver on or near the earth measures, be its clock a third of a second off.
constexpr double kLeastRange = 1e6, kMostRange = 1e8;  // metres
constexpr double kMostPhase = 1e10;                    // cycles
constexpr double kMostDoppler = 1e5;                   // hertz
constexpr double kMostSignal = 100.0;                  // dB-Hz

bool IsSame(const char* code, const char* other) {
  return code[0] == other[0] && code[1] == other[1];
}

bool IsSame(const SignalObservation& signal, const SignalObservation& other) {
  return signal.system == other.system && signal.satellite == other.satellite &&
         IsSame(signal.code, other.code);
}

bool IsPossible(const SignalObservation& signal) {
  const bool no_range = signal.pseudorange == 0.0;
  return (no_range || (signal.pseudorange >= kLeastRange && signal.pseudorange <= kMostRange)) &&
         std::fabs(signal.carrier_phase) <= kMostPhase && std::fabs(signal.doppler) <= kMostDoppler &&
         std::fabs(signal.cn0) <= kMostSignal;
}

}  // namespace

bool PhaseHistory::Continues(const SignalObservation& signal, const ObservationEpoch& epoch, double lock,
                             unsigned mark) {
  const auto is_it = [&](const Last& last) {
    return last.system == signal.system && last.satellite == signal.satellite &&
           IsSame(last.code, signal.code);
  };
  auto last = m_Signals.begin() + static_cast<std::ptrdiff_t>(std::min(m_nNext, m_Signals.size()));
  if (last == m_Signals.end() || !is_it(*last))
    last = std::find_if(m_Signals.begin(), m_Signals.end(), is_it);
  const bool is_new = last == m_Signals.end();
  if (is_new) last = m_Signals.insert(last, Last{});
  m_nNext = static_cast<std::size_t>(last - m_Signals.begin()) + 1;

  const double moment = epoch.week * kSecondsOfWeek + epoch.time_of_week;
  const double elapsed = moment - last->moment;
  const bool goes_on = !is_new && mark == last->mark && elapsed >= 0.0 && elapsed <= lock + kLockStep;
  *last = {signal.system, static_cast<std::int16_t>(signal.satellite), {}, mark, moment};
  std::memcpy(last->code, signal.code, sizeof last->code);
  return goes_on;
}

bool EpochBuilder::SetTime(int week, double time_of_week) {
  if (!(time_of_week > -0.5 && time_of_week < kSecondsOfWeek + 0.5)) return false;
  m_Epoch.week = week;
  m_Epoch.time_of_week = time_of_week;
  if (time_of_week < 0.0) {
    --m_Epoch.week;
    m_Epoch.time_of_week += kSecondsOfWeek;
  }
  // What is less than a nanosecond before the week's end may be rounded to it.
  if (m_Epoch.time_of_week >= kSecondsOfWeek) {
    ++m_Epoch.week;
    m_Epoch.time_of_week -= kSecondsOfWeek;
  }
  return m_Epoch.week >= 0;
}

bool EpochBuilder::Add(const SignalObservation& signal, double lock, unsigned mark) {
  if (!IsPossible(signal)) return false;
  if (signal.pseudorange == 0.0 && signal.carrier_phase == 0.0) return true;
  auto& signals = m_Epoch.signals;
  const auto same = std::find_if(signals.begin(), signals.end(),
                                 [&](const SignalObservation& other) { return IsSame(signal, other); });
  if (same == signals.end()) {
    signals.push_back(signal);
    m_Locks.push_back({lock, mark});
  } else if (signal.cn0 > same->cn0) {
    *same = signal;
    m_Locks[static_cast<std::size_t>(same - signals.begin())] = {lock, mark};
  }
  return true;
}

bool EpochBuilder::Finish(PhaseHistory& history) {
  for (std::size_t i = 0; i < m_Locks.size(); ++i) {
    SignalObservation& signal = m_Epoch.signals[i];
    if (signal.carrier_phase == 0.0) continue;
    signal.slip = !history.Continues(signal, m_Epoch, m_Locks[i].seconds, m_Locks[i].mark);
  }
  return !m_Locks.empty();
}

bool ToDataRaw(const ObservationEpoch& epoch, CGPSDataRaw& raw) {
  constexpr std::size_t kRoom = 11;
  raw.Clear();
  raw.m_nGPSWeek = epoch.week;
  raw.m_dReceiverTime = raw.m_dCorrectedTime = epoch.time_of_week;
  std::vector<const SignalObservation*> chosen;
  for (const SignalObservation& signal : epoch.signals)
    if (signal.system == 'G' && IsSame(signal.code, "1C")) chosen.push_back(&signal);
  while (chosen.size() > kRoom)
    chosen.erase(std::min_element(chosen.begin(), chosen.end(),
                                  [](const auto* a, const auto* b) { return a->cn0 < b->cn0; }));
  for (const SignalObservation* signal : chosen) {
    CGPSSatelliteDataRaw& slot = raw.m_Satellites[raw.m_nSatellites++];
    slot.m_nPRN = signal->satellite;
    slot.m_nSignalCount = static_cast<int>(std::lround(signal->cn0));
    slot.m_dPseudorange = signal->pseudorange;
    slot.m_dCarrierPhase = signal->carrier_phase;
    slot.m_dDoppler = signal->doppler;
    slot.m_bValid = true;
  }
  raw.m_bEpochComplete = true;
  return raw.m_nSatellites > 0;
}

}  // namespace rawdata
