#pragma once

#include "gpsengine/engine/gpsengine.h"

#pragma GCC visibility push(default)

namespace gps {

/// What the library has counted in a run.
struct Tally {
  long long messages = 0, sentences = 0, checksum_errors = 0, binary = 0, bad_binary = 0, dropped = 0;

  /// Messages that were well-formed and known.
  long long Good() const { return sentences - checksum_errors + binary; }
};

/// So far, of an engine whose receiver is selected.
inline Tally TallyOf(const CGPSEngine& engine) {
  const CGPSReceiver& receiver = *engine.GetReceiver();
  return {engine.GetMessages(),         receiver.GetSentencesRecognised(), receiver.GetChecksumErrors(),
          receiver.GetBinaryMessages(), receiver.GetBadBinaryMessages(),   engine.GetDroppedBuffers()};
}

}  // namespace gps

#pragma GCC visibility pop
