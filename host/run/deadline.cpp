#include "host/run/deadline.h"

#include <algorithm>

namespace host {

int MillisecondsUntil(Deadline::Moment moment) {
  if (moment == Deadline::kNever) return -1;
  const auto rest = std::chrono::ceil<std::chrono::milliseconds>(moment - Deadline::Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(rest, 0, 1 << 30));
}

void WaitFor(std::vector<pollfd>& waits, Deadline::Moment until) {
  if (poll(waits.data(), waits.size(), MillisecondsUntil(until)) > 0) return;
  for (auto& wait : waits) wait.revents = 0;
}

}  // namespace host
