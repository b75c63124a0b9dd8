#pragma once

#include <string>
#include <vector>

#include "gpsengine/receiver/gpsreceiver.h"
#include "host/records/hostwindow.h"
#include "host/run/recording.h"

namespace host {

/// Notes which kinds of message a stream carries, each once.
class KindListener : public CGPSReceiver {
 public:
  KindListener() { SetupReceiver(0, 0, 0.0, "", true); }
  CString GetName() override { return "listener"; }

  using CGPSReceiver::Parse;
  bool Parse(CString& message, GPSStringType type) override;

  bool HasUnderstood() const { return !sentences.empty() || !reports.empty() || !binary.empty(); }

  std::vector<std::string> sentences;  ///< Of NMEA, as "GGA".
  std::vector<std::string> reports;    ///< In a make's own language.
  std::vector<std::string> binary;     ///< Records, by their tags.
  std::vector<std::string> foreign;    ///< Well-formed and not known.
};

/// "GGA, RMC".
std::string Joined(const std::vector<std::string>& list);

/// Throws a Failure that says what a recording holds, if nothing of it was decoded, nor shown by the window.
/// Called behind its end.
void CheckUnderstood(const Recording& recording, const HostWindow& window);

}  // namespace host
