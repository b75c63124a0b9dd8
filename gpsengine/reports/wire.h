#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

/// Reads the big-endian numbers of a binary payload one after another, aligned or not. The caller vouches for
/// the bytes.
class WireReader {
 public:
  explicit WireReader(const void* payload) : m_pNext(static_cast<const unsigned char*>(payload)) {}

  /// The next number: a whole number in two's complement, or an IEEE 754 float or double.
  template <class T>
  T Take() {
    using Bits = std::conditional_t<
        sizeof(T) == 8, std::uint64_t,
        std::conditional_t<sizeof(T) == 4, std::uint32_t,
                           std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint8_t>>>;
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) bits = bits << 8 | *m_pNext++;
    return std::bit_cast<T>(static_cast<Bits>(bits));
  }
  void Skip(int count) { m_pNext += count; }

 private:
  const unsigned char* m_pNext;
};

/// The sum of the payload's first `count` bytes, an even number of them, as big-endian 16-bit words.
inline std::uint16_t WireChecksum(const void* payload, int count) {
  WireReader in(payload);
  unsigned sum = 0;
  for (int i = 0; i < count; i += 2) sum += in.Take<std::uint16_t>();
  return static_cast<std::uint16_t>(sum);
}
