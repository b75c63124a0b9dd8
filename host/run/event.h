#pragma once

#include <sys/eventfd.h>

#include "host/run/descriptor.h"

namespace host {

/// Something that one thread tells and another one waits for, with poll.
class Event {
 public:
  void Set() const { eventfd_write(descriptor_.Get(), 1); }
  void Clear() const {
    eventfd_t count;
    eventfd_read(descriptor_.Get(), &count);
  }
  /// Readable while it is set.
  int Descriptor() const { return descriptor_.Get(); }

 private:
  const UniqueDescriptor descriptor_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

}  // namespace host
