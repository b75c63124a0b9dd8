#pragma once

#include "host/run/signals.h"

namespace host {

/// Ctrl-C, and the signals that ask a program to end, as something that a loop can wait for. Made before any
/// other thread starts.
class Interrupt {
 public:
  Interrupt() = default;
  ~Interrupt();  ///< Signals have their usual effect again, but for those that have come.

  /// Readable once a signal has come.
  int Descriptor() const { return signals_.Descriptor(); }
  /// A signal has come.
  bool HasCome() const;

 private:
  const Signals signals_{SIGINT, SIGTERM, SIGHUP};
};

}  // namespace host
