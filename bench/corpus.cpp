#include "bench/corpus.h"

#include <algorithm>
#include <array>
#include <utility>

#include "simulator/nmea.h"
#include "simulator/world.h"

namespace bench {

namespace {

using simulator::Epoch;
using simulator::World;

constexpr double kMask = 5.0;  // degrees

simulator::Options OptionsOf(unsigned seed, bool moving) {
  simulator::Options options;
  options.seed = seed;
  options.moving = moving;
  return options;
}

Epoch EpochAt(const World& world, int second) {
  Epoch epoch;
  epoch.seconds = second;
  epoch.utc = simulator::Options().start_utc + std::chrono::seconds(second);
  epoch.truth = world.TruthAt(second);
  epoch.views = world.InView(second, kMask);
  epoch.dilution = simulator::DilutionOf(epoch.views);
  epoch.geoid_separation = simulator::Options().geoid_separation;
  if (simulator::UsedCount(epoch.views) < 4) epoch.quality = 0;
  return epoch;
}

using Change = std::pair<std::size_t, std::string_view>;

/// A sentence with other fields at some places, of which 0 is its tag. A place after its end makes it
/// longer.
std::string Edit(std::string_view sentence, std::initializer_list<Change> changes) {
  std::vector<std::string> fields{""};
  for (const char c : sentence.substr(1, sentence.find('*') - 1)) {
    if (c == ',') {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  for (const auto& [place, text] : changes) {
    fields.resize(std::max(fields.size(), place + 1));
    fields[place] = text;
  }
  std::string body;
  for (const std::string& field : fields) body += (&field == fields.data() ? "" : ",") + field;
  return simulator::Sentence(body);
}

std::string Moving(const Epoch& e) {
  return Gga(e) + Gsa(e) + Gsv(e) + Vtg(e) + Rmc(e) + Gll(e) + Zda(e);
}

// A receiver that stands still has no course.
std::string AtRest(const Epoch& e) {
  return Gga(e) + Gsa(e) + Gsv(e) + Edit(Vtg(e), {{1, ""}, {3, ""}}) + Edit(Rmc(e), {{8, ""}, {10, ""}}) +
         Gll(e) + Zda(e);
}

// One that has just been switched on sees satellites and knows the time.
std::string NoFix(Epoch e) {
  e.quality = 0;
  e.dilution = {};
  for (simulator::View& view : e.views) view.used = false;
  return Gga(e) + Gsa(e) + Gsv(e) + Edit(Vtg(e), {{1, ""}, {3, ""}, {5, ""}, {7, ""}}) +
         Edit(Rmc(e), {{7, ""}, {8, ""}, {10, ""}}) + Gll(e) + Zda(e);
}

// A receiver of several systems: a long group of satellites of one of them, one of each other, and those used
// of each.
std::string Several(const Epoch& e, const std::array<World, 3>& others) {
  constexpr std::array<std::string_view, 4> kGsv = {"GPGSV", "GLGSV", "GAGSV", "GBGSV"};
  constexpr std::array<std::string_view, 4> kIds = {"1", "2", "3", "4"};
  std::array<Epoch, 4> systems{e, e, e, e};
  for (std::size_t i = 0; i < others.size(); ++i) {
    systems[i + 1].views = others[i].InView(e.seconds, kMask);
  }
  for (simulator::View view : systems[1].views) {
    view.prn += 32;
    systems[0].views.push_back(view);
  }
  for (simulator::View& view : systems[1].views) view.prn += 64;
  std::string text = Edit(Gga(e), {{0, "GNGGA"}, {7, "12"}}) + Edit(Vtg(e), {{0, "GNVTG"}});
  for (std::size_t i = 0; i < systems.size(); ++i)
    text += Edit(Gsa(systems[i]), {{0, "GNGSA"}, {18, kIds[i]}});
  for (std::size_t i = 0; i < systems.size(); ++i) {
    const std::string group = Gsv(systems[i]);
    for (const std::string_view page : SplitLines(group)) text += Edit(page, {{0, kGsv[i]}});
  }
  return text + Edit(Rmc(e), {{0, "GNRMC"}}) + Edit(Gll(e), {{0, "GNGLL"}}) + Edit(Zda(e), {{0, "GNZDA"}});
}

}  // namespace

std::string MakeCorpus(std::size_t bytes) {
  const World moving(OptionsOf(1, true)), at_rest(OptionsOf(1, false));
  const std::array<World, 3> others{World(OptionsOf(2, true)), World(OptionsOf(3, true)),
                                    World(OptionsOf(4, true))};
  constexpr int kScene = 10;  // seconds
  std::string corpus;
  for (int second = 1; corpus.size() < bytes; ++second) {
    switch (second / kScene % 4) {
      case 0:
        corpus += Moving(EpochAt(moving, second));
        break;
      case 1:
        corpus += AtRest(EpochAt(at_rest, second));
        break;
      case 2:
        corpus += NoFix(EpochAt(at_rest, second));
        break;
      default:
        corpus += Several(EpochAt(moving, second), others);
    }
  }
  return corpus;
}

std::vector<std::string_view> SplitLines(std::string_view corpus) {
  std::vector<std::string_view> lines;
  for (auto end = corpus.find('\n'); end != std::string_view::npos; end = corpus.find('\n')) {
    lines.push_back(corpus.substr(0, end + 1));
    corpus.remove_prefix(end + 1);
  }
  return lines;
}

}  // namespace bench
