#pragma once

namespace host {

/// The number under which the library opens the port of a run.
constexpr int kPort = 1;

}  // namespace host
