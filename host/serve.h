#pragma once

#include <optional>
#include <string>

#include "host/live.h"
#include "host/run/interrupt.h"
#include "host/run/output.h"
#include "host/server/mqttbroker.h"

namespace host {

/// Exports and the record are made beside what is served, and the filters act on the exports alone.
struct ServeOptions : LiveOptions {
  ServeOptions() { format = Format::none; }

  std::string listen = "127.0.0.1";  ///< Address to listen on.
  int tcp = 2947;                    ///< Port of gpsd's protocol; 0 for any that is free.
  std::optional<int> http;           ///< Port of the page, likewise; none for no page.
  MqttOptions mqtt;                  ///< Broker to publish at, if it has a host.
};

/// Serves what a receiver sends to programs that speak gpsd's protocol, and to browsers. A line on the output
/// names each port that is listened on. Throws a Failure if the run cannot begin or the port is lost.
ExitCode Serve(const ServeOptions& options, const Interrupt& interrupt, Output& output);

}  // namespace host
