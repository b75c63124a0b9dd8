#pragma once

#include <cstddef>

#include "gpsengine/rawdata/blockreader.h"

namespace rawdata {

/// Where the body of an OEM binary message begins, and its length. `at` is 0 for a message that is none.
struct OemBody {
  std::size_t at = 0, length = 0;
};

/// The body of a whole message with a good CRC, of the first antenna and in the binary form.
OemBody FindBody(const BlockReader& block);

}  // namespace rawdata
