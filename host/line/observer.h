#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "gpsengine/platform/serial.h"

namespace host {

/// Sees what a serial line gives, whoever reads it: every byte, and that the line is gone. Lines are read on
/// one thread, and the observer is asked on another. Whole writes follow each other, whoever makes them.
class LineObserver {
 public:
  LineObserver();

  /// Opens lines which the observer sees. It sees one at a time.
  SerialLineFactory Opener(SerialLineFactory open) const;

  /// Readable when there are bytes to take, or the line has gone.
  int Descriptor() const;
  /// The bytes since the last call.
  std::string Take() const;
  /// The line has gone, and has not been opened again.
  bool IsLost() const;
  /// Writes between what others write, and gives how much the line has taken before it stalled, which is
  /// nothing without a line. From any thread.
  std::size_t Write(std::string_view bytes) const;

 private:
  struct State;
  class Line;

  std::shared_ptr<State> state_;  // with the lines, which end when the library is done with them
};

}  // namespace host
