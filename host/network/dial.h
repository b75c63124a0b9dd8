#pragma once

#include <memory>

#include "gpsengine/platform/serial.h"
#include "host/network/address.h"

namespace host {

/// An attempt to open a line to an address. It goes on in the background, on a thread of its own: a name can
/// take long to look up, and a peer to answer.
class Dial {
 public:
  explicit Dial(const Address& address);
  /// Gives up at once. What cannot be broken off ends by itself, and its outcome is dropped.
  ~Dial();
  Dial(const Dial&) = delete;
  Dial& operator=(const Dial&) = delete;

  /// Readable once the attempt is over.
  int Descriptor() const;
  bool IsOver() const;
  /// The line, once the attempt is over. Throws a Failure that says why there is none.
  std::unique_ptr<SerialLine> Take();

 private:
  struct State;

  std::shared_ptr<State> state_;  // with the thread
};

}  // namespace host
