#pragma once

#include <csignal>
#include <initializer_list>

#include "host/run/descriptor.h"

namespace host {

/// Some signals as something that a loop can wait for. Made before any other thread starts, so that none of
/// them is disturbed: from then on these signals have no effect by themselves.
class Signals {
 public:
  explicit Signals(std::initializer_list<int> signals);
  /// They have their usual effect again, those too that have come and were not taken.
  ~Signals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// Readable once one has come.
  int Descriptor() const { return descriptor_.Get(); }
  /// Takes one that has come; 0 for none.
  int Take() const;

 private:
  sigset_t before_;
  UniqueDescriptor descriptor_;
};

}  // namespace host
