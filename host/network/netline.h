#pragma once

#include <memory>

#include "gpsengine/platform/serial.h"
#include "host/network/address.h"
#include "host/run/descriptor.h"

namespace host {

/// A line over a connection that carries a receiver's bytes as they are, or gpsd's raw stream, or datagrams,
/// or over standard input. It has no settings, and nothing that has come is ever discarded. Where the address
/// takes no commands, no byte is written but gpsd's request for the stream.
std::unique_ptr<SerialLine> OpenNetLine(UniqueDescriptor connection, const Address& address);

}  // namespace host
