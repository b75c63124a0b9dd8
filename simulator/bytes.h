#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string>

namespace simulator {

/// Appends the bytes of an integer or an IEEE 754 number, the highest one first.
template <class T>
void AppendBig(std::string& bytes, T value) {
  char raw[sizeof value];
  const auto* source = reinterpret_cast<const char*>(&value);
  std::copy(source, source + sizeof value, raw);
  if constexpr (std::endian::native == std::endian::little) std::reverse(raw, raw + sizeof raw);
  bytes.append(raw, sizeof raw);
}

/// The same, the lowest one first.
template <class T>
void AppendLittle(std::string& bytes, T value) {
  const std::size_t start = bytes.size();
  AppendBig(bytes, value);
  std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(start), bytes.end());
}

}  // namespace simulator
