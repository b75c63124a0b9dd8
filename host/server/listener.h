#pragma once

#include <string>

#include "host/run/descriptor.h"

namespace host {

/// How many connections the kernel keeps until they are accepted.
inline constexpr int kBacklog = 64;

/// A TCP port on which clients may connect.
class Listener {
 public:
  /// `address` is a numeric one. Port 0 lets the system choose one. Throws a Failure that
  /// names the address and, where the port is taken, `option`, which chooses another.
  Listener(const std::string& address, int port, const std::string& option);

  int Descriptor() const { return descriptor_.Get(); }
  int Port() const { return port_; }
  /// The next client's connection, which does not block, or none; `peer` becomes its address and port.
  UniqueDescriptor Accept(std::string& peer) const;

 private:
  UniqueDescriptor descriptor_;
  int port_ = 0;
};

/// Whether only programs of this machine reach that address. Throws a Failure if it is no address.
bool IsLoopback(const std::string& address);

}  // namespace host
