#pragma once

#include <memory>
#include <string>

#include "gpsengine/platform/serial.h"
#include "host/network/address.h"
#include "host/run/descriptor.h"
#include "host/run/event.h"

namespace host {

/// A serial line at the other end of a connection, with speed, framing and flow control by RFC 2217. Blocks
/// until the other side has agreed to that, a few seconds at most, or `given_up` is set. Throws a Failure if
/// it does not agree.
std::unique_ptr<SerialLine> OpenRfc2217Line(UniqueDescriptor connection, const Address& address,
                                            const Event& given_up);

/// Throws a Failure if the program was built without what such lines need.
void CheckRfc2217();
/// What the program was built with for it: "gensio 2.6.2".
std::string Rfc2217Version();

}  // namespace host
