#pragma once

#include <string>
#include <string_view>

#include "gpsengine/engine/gpsengine.h"
#include "host/run/descriptor.h"

namespace host {

/// The bytes that a run reads, as they come, for a run without an end: by way of the engine's recording, into
/// a pipe. The reader thread waits where nobody takes them for long, so whoever makes one takes them whenever
/// the descriptor is readable.
class LineTap {
 public:
  /// To be made before the engine starts, on an engine that records nothing else.
  explicit LineTap(CGPSEngine& engine);

  int Descriptor() const { return read_.Get(); }
  /// Appends the bytes since the last call.
  void Take(std::string& bytes) const;

 private:
  UniqueDescriptor read_, write_;
};

/// Finds the sentences in a receiver's bytes: what begins with "$" or "!" and is text up to the line end.
class SentenceFinder {
 public:
  /// The next bytes, in pieces of any size; calls `take(std::string_view)` for each sentence, which ends in
  /// CR LF.
  template <class Take>
  void Feed(std::string_view bytes, Take&& take) {
    for (const char c : bytes) {
      if (Next(c)) take(std::string_view(sentence_));
    }
  }

 private:
  bool Next(char c);

  std::string sentence_;  // as far as it has come; or whole
};

}  // namespace host
