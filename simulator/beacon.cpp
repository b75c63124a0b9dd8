#include "simulator/beacon.h"

#include <cmath>

#include "simulator/text.h"

namespace simulator {
namespace {

// What an automatic search finds, and the band in which there is anything to be found.
constexpr double kStation = 304.5, kLowest = 283.5, kHighest = 325;
constexpr int kStationRate = 100;

}  // namespace

bool BeaconCore::TuneBeacon(const Fields& f) {
  const bool manual = f[2] == "M", manual_rate = f[4] == "M";
  if (f.size() != 6 || (!manual && f[2] != "A") || (!manual_rate && f[4] != "A")) return false;
  if (manual && !Number(f[1])) return false;
  if (manual_rate && !Whole(f[3], 25, 200)) return false;
  SetValue("beacon frequency", manual ? f[1] : "");
  SetValue("beacon rate", manual_rate ? f[3] : "");
  return true;
}

bool BeaconCore::ReportBeacon(const Fields& f) {
  const std::string_view report = f[f.size() - 1];
  if (report == "MSS") Answer(SignalReport());
  if (report == "MSK") Answer(TuningReport());
  return report == "MSS" || report == "MSK";
}

double BeaconCore::Frequency() const {
  return Number(Value("beacon frequency")).value_or(kStation);
}
int BeaconCore::BitRate() const {
  return Whole(Value("beacon rate"), 25, 200).value_or(kStationRate);
}
bool BeaconCore::HearsBeacon() const {
  return Frequency() >= kLowest && Frequency() <= kHighest;
}

std::string BeaconCore::SignalReport() const {
  const double fading = 2 * std::sin(Now().seconds / 40);
  const int strength = HearsBeacon() ? static_cast<int>(std::lround(52 + fading)) : 0;
  return Sentence(Format("%sMSS,%d,%d,%.1f,%d", talker_, strength, strength / 2, Frequency(), BitRate()));
}

std::string BeaconCore::TuningReport() const {
  return Sentence(Format("%sMSK,%.1f,%c,%d,%c,0", talker_, Frequency(),
                         Value("beacon frequency").empty() ? 'A' : 'M', BitRate(),
                         Value("beacon rate").empty() ? 'A' : 'M'));
}

}  // namespace simulator
