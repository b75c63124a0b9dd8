#pragma once

#include "host/network/address.h"
#include "host/run/descriptor.h"
#include "host/run/event.h"

namespace host {

/// Looks the host up and connects to the first of its addresses that answers, or listens for datagrams, or
/// takes standard input. Blocks: each address has a few seconds. Once `given_up` is set it only ends a
/// look-up, which cannot be broken off. The descriptor does not block. Throws a Failure that says what was
/// tried.
UniqueDescriptor Connect(const Address& address, const Event& given_up);

}  // namespace host
