#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "gpsengine/face/words.h"
#include "host/exports/rinexformat.h"
#include "host/exports/rinextext.h"

namespace host {

std::vector<const rawdata::SignalObservation*> BySatellite(const SignalList& signals) {
  std::vector<const rawdata::SignalObservation*> sorted;
  sorted.reserve(signals.size());
  for (const auto& signal : signals) sorted.push_back(&signal);
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) {
    const auto key = [](const auto* s) { return std::tuple(s->system != 'G', s->system, s->satellite); };
    return key(a) < key(b);
  });
  return sorted;
}

std::string ObservationKind(const std::string& systems) {
  static constexpr std::pair<char, const char*> kNames[] = {{'G', "GPS"}, {'R', "GLONASS"}, {'E', "GALILEO"},
                                                            {'C', "BDS"}, {'J', "QZSS"},    {'I', "IRNSS"},
                                                            {'S', "SBAS"}};
  const std::string kind = "OBSERVATION DATA    ";
  if (systems.size() != 1) return kind + "M (MIXED)";
  for (const auto& [letter, name] : kNames) {
    if (letter == systems.front()) return kind + letter + " (" + name + ')';
  }
  return kind + systems;
}

std::string StationLines(const RinexStation& station) {
  std::string lines = HeaderLine(station.marker, "MARKER NAME");
  if (!station.marker_number.empty()) lines += HeaderLine(station.marker_number, "MARKER NUMBER");
  std::string line;
  line += Print("%-20.20s%-40.40s", station.observer.c_str(), station.agency.c_str());
  lines += HeaderLine(line, "OBSERVER / AGENCY");
  line.clear();
  line += Print("%-20.20s%-20.20s%-20.20s", station.receiver_number.c_str(), station.receiver.c_str(),
                station.receiver_version.c_str());
  lines += HeaderLine(line, "REC # / TYPE / VERS");
  line.clear();
  line += Print("%-20.20s%-20.20s", station.antenna_number.c_str(), station.antenna.c_str());
  lines += HeaderLine(line, "ANT # / TYPE");
  line.clear();
  for (const double x : station.place) line += Print("%14.4f", std::isfinite(x) ? x : 0.0);
  lines += HeaderLine(line, "APPROX POSITION XYZ");
  line.clear();
  line += Print("%14.4f%14.4f%14.4f", station.antenna_height, 0.0, 0.0);
  lines += HeaderLine(line, "ANTENNA: DELTA H/E/N");
  return lines;
}

std::string TimeLines(const RinexStation& station) {
  std::string lines, line;
  if (station.interval > 0.0) {
    line += Print("%10.3f", station.interval);
    lines = HeaderLine(line, "INTERVAL");
    line.clear();
  }
  const Calendar c = CalendarOf(station.first, 7);
  line += Print("%6d%6d%6d%6d%6d%13.7f%5s%3s", c.year, c.month, c.day, c.hour, c.minute, c.second, "", "GPS");
  return lines + HeaderLine(line, "TIME OF FIRST OBS");
}

void AppendIndicators(std::string& text, const rawdata::SignalObservation& signal, const RinexKind& kind,
                      bool is_phase) {
  // The standard's digits for the strength: a step is 6 dB-Hz.
  constexpr double kStep = 6.0, kLeast = 1.0, kMost = 9.0;
  const int loss = (signal.slip ? 1 : 0) + (signal.half_cycle ? 2 : 0);
  text += is_phase && loss > 0 ? static_cast<char>('0' + loss) : ' ';
  const bool has_strength = kind.in_decibels && signal.cn0 > 0.0;
  text += has_strength
              ? static_cast<char>('0' + static_cast<int>(std::clamp(signal.cn0 / kStep, kLeast, kMost)))
              : ' ';
}

}  // namespace host
