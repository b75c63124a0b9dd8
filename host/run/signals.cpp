#include "host/run/signals.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <system_error>

namespace host {

Signals::Signals(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  pthread_sigmask(SIG_BLOCK, &set, &before_);
  descriptor_ = UniqueDescriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!descriptor_) throw std::system_error(errno, std::generic_category(), "cannot watch for signals");
}

int Signals::Take() const {
  signalfd_siginfo signal;
  const bool has_come = read(descriptor_.Get(), &signal, sizeof signal) == sizeof signal;
  return has_come ? static_cast<int>(signal.ssi_signo) : 0;
}

}  // namespace host
