#include "host/run/portwatch.h"

#include <fcntl.h>
#include <poll.h>

#include <utility>

namespace host {

PortWatch::PortWatch(std::string device) : device_(std::move(device)) {
  if (!device_.empty()) {
    descriptor_ = UniqueDescriptor(open(device_.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  }
}

void PortWatch::OnEvents(short events) {
  if ((events & (POLLHUP | POLLERR | POLLNVAL)) == 0) return;
  lost_ = true;
  Release();
}

void PortWatch::Look() {
  if (access(device_.c_str(), F_OK) != 0) lost_ = true;
}

}  // namespace host
