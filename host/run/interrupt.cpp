#include "host/run/interrupt.h"

#include <poll.h>
#include <sys/signalfd.h>

#include <cerrno>
#include <system_error>

namespace host {

namespace {

sigset_t EndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
  return signals;
}

}  // namespace

Interrupt::Interrupt() {
  const sigset_t signals = EndingSignals();
  pthread_sigmask(SIG_BLOCK, &signals, &before_);
  descriptor_ = UniqueDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!descriptor_) throw std::system_error(errno, std::generic_category(), "cannot watch for signals");
}

Interrupt::~Interrupt() {
  signalfd_siginfo signal;
  while (read(descriptor_.Get(), &signal, sizeof signal) > 0) {
  }
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool Interrupt::HasCome() const {
  pollfd signal{descriptor_.Get(), POLLIN, 0};
  return poll(&signal, 1, 0) > 0;
}

}  // namespace host
