#pragma once

#include <string>

namespace simulator {

/// Text put together as std::printf does it.
[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...);

}  // namespace simulator
