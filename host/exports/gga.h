#pragma once

#include <string>

#include "host/records/epoch.h"

namespace host {

/// The position as a sentence with its line end; empty without a time.
std::string GgaOf(const PositionEpoch& epoch);

}  // namespace host
