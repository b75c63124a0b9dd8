#pragma once

#include "gpsengine/engine/gpsengine.h"

#pragma GCC visibility push(default)

namespace gps {

/// What the library has counted in a run.
struct Tally {
  long long messages = 0;         ///< Framed.
  long long sentences = 0;        ///< Whose tag is known.
  long long checksum_errors = 0;  ///< Of them.
  long long binary = 0;           ///< Binary messages.
  long long bad_binary = 0;       ///< Of them, those that were damaged.
  long long dropped = 0;          ///< Times the stream was discarded.

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
