#include "host/run/interrupt.h"

#include <poll.h>

namespace host {

Interrupt::~Interrupt() {
  while (signals_.Take() != 0) {
  }
}

bool Interrupt::HasCome() const {
  pollfd signal{signals_.Descriptor(), POLLIN, 0};
  return poll(&signal, 1, 0) > 0;
}

}  // namespace host
