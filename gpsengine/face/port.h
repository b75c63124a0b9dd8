#pragma once

#pragma GCC visibility push(default)

namespace gps {

/// The number under which the library opens the port of a run.
constexpr int kPort = 1;

}  // namespace gps

#pragma GCC visibility pop
