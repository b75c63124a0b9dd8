#pragma once

#include <string>

namespace host {

/// docs/receivers.md: for each model its capability answers and, for each operation that they open, the lines
/// it writes and the times it waits. No engine may run meanwhile.
std::string ReceiversDoc();

}  // namespace host
