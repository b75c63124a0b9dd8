#pragma once

#include <map>
#include <vector>

#include "simulator/world.h"

namespace simulator {

/// Remembers which ephemeris of each satellite the host has been told.
class EphemerisNews {
 public:
  /// The satellites in view whose ephemeris at that moment is not told yet; it counts as told from now on.
  std::vector<Ephemeris> Take(const World& world, double seconds, const std::vector<View>& views) {
    std::vector<Ephemeris> news;
    for (const View& view : views) {
      const Ephemeris ephemeris = world.EphemerisAt(view.prn, seconds);
      const auto [it, is_new] = told_.try_emplace(view.prn, ephemeris.issue);
      if (is_new || it->second != ephemeris.issue) news.push_back(ephemeris);
      it->second = ephemeris.issue;
    }
    return news;
  }

  void Forget() { told_.clear(); }

 private:
  std::map<int, int> told_;  // issue by satellite
};

}  // namespace simulator
