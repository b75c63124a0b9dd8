#pragma once

#include <string>

namespace host {

/// Why opening a device failed with this error of the system, and what to do about it, as a sentence for the
/// user.
std::string ExplainPort(const std::string& device, int error);

}  // namespace host
