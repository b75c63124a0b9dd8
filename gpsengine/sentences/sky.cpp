#include "gpsengine/sentences/sky.h"

#include <algorithm>

namespace gps {

int Sky::UsedBy(int stated) const {
  constexpr int kMostStated = 12;
  return stated < kMostStated ? stated : std::max(stated, used.value_or(0));
}

std::optional<double> Sky::MeanSignal() const {
  int sum = 0, count = 0;
  for (const Satellite& satellite : satellites) {
    if (!satellite.used || !satellite.signal) continue;
    sum += *satellite.signal;
    ++count;
  }
  if (count == 0) return std::nullopt;
  return static_cast<double>(sum) / count;
}

}  // namespace gps
