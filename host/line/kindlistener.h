#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gpsengine/engine/gpsengine.h"
#include "host/records/hostwindow.h"
#include "host/run/recording.h"

namespace host {

/// The kinds of message that a stream carries, each once.
struct MessageKinds {
  std::vector<std::string> sentences;  ///< Of NMEA, as "GGA".
  std::vector<std::string> reports;    ///< In a make's own language.
  std::vector<std::string> binary;     ///< Records, by their tags.
  std::vector<std::string> foreign;    ///< Well-formed and not known.

  bool AreUnderstood() const { return !sentences.empty() || !reports.empty() || !binary.empty(); }
};

/// Notes the kinds that a stream carries, by an engine of its own.
class KindListener {
 public:
  KindListener();
  /// The next bytes.
  void Hear(std::string_view bytes);
  const MessageKinds& Kinds() const { return kinds_; }
  int ChecksumErrors() const { return engine_.GetReceiver()->GetChecksumErrors(); }

 private:
  MessageKinds kinds_;
  CGPSEngine engine_;
};

/// Throws a Failure that says what a recording holds, if nothing of it was decoded, nor shown by the window.
/// Called after its end.
void CheckUnderstood(const Recording& recording, const HostWindow& window);

}  // namespace host
