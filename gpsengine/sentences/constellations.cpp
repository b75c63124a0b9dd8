#include "gpsengine/sentences/constellations.h"

#include <algorithm>
#include <iterator>

namespace gps {

namespace {

// SBAS satellites have their numbers from 120 up, of which sentences make 33 and up.
constexpr int kSbas = 87;
constexpr int kLastShortSbas = 151;

constexpr Constellation kConstellations[] = {
    {Gnss::gps, "GPS", 'G', "GP", "", 1, 0, 0, 0},
    {Gnss::sbas, "SBAS", 'S', "GP", "", 0, 0, -kSbas, -kSbas},
    {Gnss::galileo, "Galileo", 'E', "GA", "", 3, 36, 300, 0},
    {Gnss::beidou, "BeiDou", 'C', "GB", "BD", 4, 64, 400, 0},
    {Gnss::imes, "IMES", 'I', "GP", "", 0, 0, 172, 172},
    {Gnss::qzss, "QZSS", 'J', "GQ", "QZ", 5, 10, 192, 0},
    {Gnss::glonass, "GLONASS", 'R', "GL", "", 2, 32, 64, 64},
    {Gnss::navic, "NavIC", 'N', "GI", "", 6, 18, 500, 0},
};

constexpr bool StandInOrder() {
  int next = 0;
  return std::all_of(std::begin(kConstellations), std::end(kConstellations),
                     [&](const Constellation& row) { return static_cast<int>(row.system) == next++; });
}
static_assert(StandInOrder());

// Of the numbers of all systems, as sentences have them that do not say the system.
constexpr struct {
  int first, last;
  Gnss system;
  int offset;
} kRanges[] = {
    {1, 32, Gnss::gps, 0},          {33, 64, Gnss::sbas, kSbas},     {65, 99, Gnss::glonass, -64},
    {120, 158, Gnss::sbas, 0},      {173, 182, Gnss::imes, -172},    {193, 200, Gnss::qzss, -192},
    {201, 264, Gnss::beidou, -200}, {301, 336, Gnss::galileo, -300}, {401, 464, Gnss::beidou, -400},
    {901, 918, Gnss::navic, -900},
};

template <class Condition>
const Constellation* Find(Condition condition) {
  const auto* const found = std::find_if(std::begin(kConstellations), std::end(kConstellations), condition);
  return found != std::end(kConstellations) ? found : nullptr;
}

Gnss SystemOf(const Constellation* constellation) {
  return constellation != nullptr ? constellation->system : Gnss::unknown;
}

int NumberBy(int Constellation::*offset, const SatelliteId& satellite) {
  const Constellation* const row = FindConstellation(satellite.system);
  const bool is_long = satellite.system == Gnss::sbas && satellite.number > kLastShortSbas;
  return row == nullptr || is_long ? satellite.number : satellite.number + row->*offset;
}

}  // namespace

const Constellation* FindConstellation(Gnss system) {
  return system == Gnss::unknown ? nullptr : &kConstellations[static_cast<int>(system)];
}

Gnss SystemOfTalker(std::string_view talker) {
  if (talker.empty()) return Gnss::unknown;
  return SystemOf(
      Find([=](const Constellation& row) { return row.talker == talker || row.talker2 == talker; }));
}

Gnss SystemOfId(int system_id) {
  if (system_id <= 0) return Gnss::unknown;
  return SystemOf(Find([=](const Constellation& row) { return row.system_id == system_id; }));
}

SatelliteId SatelliteOf(int number, Gnss said) {
  const Constellation* const own = FindConstellation(said);
  if (own != nullptr && number >= 1 && number <= own->last) return {said, number};
  // Beyond 200 others have the numbers of BeiDou.
  constexpr int kLastQzss = 202;
  if (said == Gnss::qzss && number > 192 && number <= kLastQzss) return {said, number - 192};
  for (const auto& [first, last, system, offset] : kRanges) {
    if (number >= first && number <= last) return {system, number + offset};
  }
  return {Gnss::unknown, number};
}

int SatelliteId::Prn() const {
  return NumberBy(&Constellation::prn, *this);
}

int SatelliteId::SentenceNumber() const {
  return NumberBy(&Constellation::sentence_number, *this);
}

std::string SatelliteId::Name() const {
  const Constellation* const row = FindConstellation(system);
  if (row == nullptr) return std::to_string(number);
  const int shown = system == Gnss::sbas ? number - 100 : number;
  return row->letter + (shown < 10 ? "0" + std::to_string(shown) : std::to_string(shown));
}

}  // namespace gps
