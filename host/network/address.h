#pragma once

#include <string>

#include "host/run/failure.h"

namespace host {

/// Where a receiver's bytes come from, if that is not a device.
struct Address {
  enum class Scheme {
    tcp,      ///< A connection that carries the receiver's bytes and nothing else.
    rfc2217,  ///< A serial line over telnet, whose settings are made from here.
    udp,      ///< Datagrams that are sent here.
    gpsd,     ///< The raw stream of a server that speaks gpsd's protocol.
    input,    ///< Standard input.
  };

  Scheme scheme = Scheme::input;
  std::string host;  ///< A name or a number; empty: udp on every address of this machine, or none.
  int port = 0;      ///< From 1 to 65535; 0 for standard input.

  /// Bytes may be sent to the receiver.
  bool TakesCommands() const { return scheme == Scheme::tcp || scheme == Scheme::rfc2217; }
  /// The baud rate of the line is set from here.
  bool HasRate() const { return scheme == Scheme::rfc2217; }
};

/// Whether what the user has given as a port is meant as an address and not as a device.
bool IsAddress(const std::string& name);
/// Throws a Failure that names what is wrong with it, and shows the right form. `option` is what the user has
/// given it for.
Address ReadAddress(const std::string& name, const std::string& option = "--port ");
/// The error of a command to an address that takes none.
Failure OnlyListenedTo(const std::string& name);

}  // namespace host
