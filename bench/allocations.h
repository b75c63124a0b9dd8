#pragma once

#include <cstddef>

namespace bench {

/// How often the process has asked for memory. The benchmarks run on one thread.
std::size_t Allocations();

}  // namespace bench
