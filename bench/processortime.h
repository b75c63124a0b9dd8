#pragma once

#include <time.h>

namespace bench {

/// Nanoseconds that this process has had of the processor: what else the machine does meanwhile does not
/// count.
inline double ProcessorTime() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return 1e9 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec);
}

}  // namespace bench
