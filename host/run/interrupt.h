#pragma once

#include <csignal>

#include "host/run/descriptor.h"

namespace host {

/// Ctrl-C, and the signals that ask a program to end, as something that a loop can wait for. Made before any
/// other thread starts, so that none of them is disturbed: from then on these signals end nothing by
/// themselves.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();  ///< Signals have their usual effect again, but for those that have come.
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  /// Readable once a signal has come.
  int Descriptor() const { return descriptor_.Get(); }
  /// A signal has come.
  bool HasCome() const;

 private:
  sigset_t before_;
  UniqueDescriptor descriptor_;
};

}  // namespace host
