#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "host/records/geoid.h"
#include "host/run/failure.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"

namespace host {

struct ServeOptions {
  std::string port;  ///< Device to read; empty for none.
  std::string play;  ///< Recording to play instead; empty for none. With neither, a simulated receiver.
  int baud = 0;      ///< Bits a second; 0 for what is set for the model.
  std::string model = "Other";
  Geoid geoid = Geoid::none;
  double antenna_height = 0.0;       ///< Metres.
  std::string listen = "127.0.0.1";  ///< Address to listen on.
  int tcp = 2947;                    ///< Port of gpsd's protocol; 0 for any that is free.
  std::optional<int> http;           ///< Port of the page, likewise; none for no page.
  double duration = 0.0;             ///< Seconds to run; 0 for no limit.
  /// How often to look whether a port that was lost is back; none to end then.
  std::optional<std::chrono::milliseconds> reconnect;
};

/// Serves what a receiver sends to programs that speak gpsd's protocol, and to browsers. A line on the output
/// names each port that is listened on. Throws a Failure if the run cannot begin or the port is lost.
ExitCode Serve(const ServeOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
