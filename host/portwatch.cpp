#include "host/portwatch.h"

#include <fcntl.h>
#include <poll.h>

#include <utility>

namespace host {

PortWatch::PortWatch(std::string device) : device_(std::move(device)) {
  if (!device_.empty()) {
    descriptor_ = UniqueDescriptor(open(device_.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  }
}

short PortWatch::Events() const { return heard_ ? 0 : POLLIN; }

void PortWatch::OnEvents(short events) {
  // A hang-up makes the line readable as well: what is then read is its end, not a byte.
  if ((events & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
    lost_ = true;
    Release();
  } else if ((events & POLLIN) != 0) {
    heard_ = true;
  }
}

void PortWatch::Look() {
  if (access(device_.c_str(), F_OK) != 0) lost_ = true;
}

}  // namespace host
