#include "host/run/waiter.h"

#include <poll.h>

#include <algorithm>

#include "gpsengine/platform/window.h"

namespace host {

namespace {

constexpr std::chrono::seconds kLookInterval{1};

}  // namespace

int MillisecondsUntil(Deadline::Clock::time_point moment) {
  if (moment == Deadline::Clock::time_point::max()) return -1;
  const auto rest = std::chrono::ceil<std::chrono::milliseconds>(moment - Deadline::Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(rest, 0, 1 << 30));
}

void Waiter::Wait(Deadline::Clock::time_point until) {
  if (watch_.NeedsLooking()) until = std::min(until, Deadline::Clock::now() + kLookInterval);
  // No event is asked for on the output and the port: that the other end has gone is told all the same.
  enum { kQueue, kSignal, kOutput, kWatch, kCount };
  std::vector<pollfd> waits = {{GetQueueDescriptor(), POLLIN, 0},
                               {interrupt_.Descriptor(), POLLIN, 0},
                               {output_.Descriptor(), 0, 0},
                               {watch_.Descriptor(), 0, 0}};
  for (const int descriptor : descriptors_) waits.push_back({descriptor, POLLIN, 0});
  const int events = poll(waits.data(), waits.size(), MillisecondsUntil(until));
  if (watch_.NeedsLooking()) watch_.Look();
  if (events <= 0) return;
  reader_gone_ = (waits[kOutput].revents & (POLLERR | POLLHUP)) != 0;
  watch_.OnEvents(waits[kWatch].revents);
  for (std::size_t i = kCount; i < waits.size(); ++i) {
    if ((waits[i].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) std::erase(descriptors_, waits[i].fd);
  }
}

}  // namespace host
