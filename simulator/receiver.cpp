#include "simulator/receiver.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "simulator/languages.h"
#include "simulator/text.h"

namespace simulator {
namespace {

struct Entry {
  const char* name;
  std::unique_ptr<Receiver> (*make)(const Options&, const Model&);
  Model model;
};

constexpr Entry kModels[] = {
    {"Ashtech", MakeAshtech, {9600}},
    {"CSI", MakeAshtech, {9600, true}},
    {"CSI - MAX", MakeJFamily, {9600, true}},
    {"Garmin 17-N", MakePlain, {4800}},
    {"Holux", MakeSirf, {4800}},
    {"Javad", MakePlain, {9600}},
    {"Leica", MakeLeica, {9600, false, true}},
    {"Omnistar", MakePlain, {4800}},
    {"Racal", MakeAshtech, {9600}},
    {"Satloc", MakePlain, {9600}},
    {"SiRF", MakeSirf, {4800}},
    {"Sokkia Axis", MakeSokkiaAxis, {9600, true}},
    {"Sokkia Axis3", MakeJFamily, {9600, true}},
    {"GSR2650 LB", MakeGsr2650, {9600}},
    {"Starlink", MakeStarlink, {9600, true}},
    {"Toughbook GPS01", MakeSirf, {4800}},
    {"Trimble", MakePlain, {4800, false, true}},
    {"Trimble Pocket", MakePlain, {9600}},
    {"Other", MakePlain, {9600}},
};

// Satellites, leap seconds and the 32-bit times of hosts end somewhere; the open end keeps a long run inside.
constexpr std::chrono::sys_seconds kFirstStart = std::chrono::sys_days{std::chrono::year{1981} / 1 / 1};
constexpr std::chrono::sys_seconds kLastStart = std::chrono::sys_days{std::chrono::year{2100} / 1 / 1};

void Require(bool good, const char* text) {
  if (!good) throw std::invalid_argument(text);
}

void Check(const Options& o) {
  Require(o.rate_hz > 0 && o.rate_hz <= 20, "rate_hz must be above 0 and at most 20");
  Require(o.latitude >= -90 && o.latitude <= 90, "latitude must be from -90 to 90 degrees");
  Require(o.longitude >= -180 && o.longitude <= 180, "longitude must be from -180 to 180 degrees");
  Require(o.height >= -1000 && o.height <= 20000, "height must be from -1000 to 20000 metres");
  Require(o.geoid_separation >= -200 && o.geoid_separation <= 200,
          "geoid_separation must be from -200 to 200 metres");
  Require(o.start_utc >= kFirstStart && o.start_utc < kLastStart,
          "start_utc must be in the years 1981 to 2099");
}

}  // namespace

const std::vector<std::string>& Models() {
  static const std::vector<std::string> kNames = [] {
    std::vector<std::string> names;
    for (const Entry& entry : kModels) names.emplace_back(entry.name);
    return names;
  }();
  return kNames;
}

std::unique_ptr<Receiver> MakeReceiver(const Options& options) {
  Check(options);
  const auto* entry = std::find_if(std::begin(kModels), std::end(kModels),
                                   [&options](const Entry& e) { return e.name == options.model; });
  if (entry == std::end(kModels)) {
    std::string text = "model \"" + options.model + "\" is unknown; there are:";
    for (const std::string& name : Models()) text += " \"" + name + '"';
    throw std::invalid_argument(text);
  }
  return entry->make(options, entry->model);
}

}  // namespace simulator
