#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "gpsengine/platform/types.h"

namespace rawdata {

/// Reads the bytes of a block, whose words hold two each, the first of them in the low half. The caller keeps
/// within Size.
class BlockReader {
 public:
  explicit BlockReader(std::span<const WORD> words) : m_Words(words) {}

  std::size_t Size() const { return 2 * m_Words.size(); }
  std::uint8_t Byte(std::size_t at) const { return static_cast<std::uint8_t>(m_Words[at / 2] >> at % 2 * 8); }

  /// The little-endian number at an even place: a whole number, or an IEEE 754 float or double.
  template <class T>
  T At(std::size_t at) const {
    using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t,
                                    std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint16_t>>;
    static_assert(sizeof(T) == sizeof(Bits));
    Bits bits = 0;
    for (std::size_t i = 0; i < sizeof(T) / 2; ++i)
      bits = static_cast<Bits>(bits | static_cast<Bits>(m_Words[at / 2 + i]) << 16 * i);
    return std::bit_cast<T>(bits);
  }

 private:
  std::span<const WORD> m_Words;
};

}  // namespace rawdata
