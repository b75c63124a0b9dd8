#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

/// Reads the big-endian numbers of a binary payload one after another, aligned or not. The caller vouches for
/// the bytes.
class WireReader {
 public:
  explicit WireReader(const void* pPayload) : m_pNext(static_cast<const unsigned char*>(pPayload)) {}

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
  void Skip(int nBytes) { m_pNext += nBytes; }

 private:
  const unsigned char* m_pNext;
};

/// The sum of the payload's first `nBytes`, an even count, as big-endian 16-bit words.
inline std::uint16_t WireChecksum(const void* pPayload, int nBytes) {
  WireReader in(pPayload);
  unsigned sum = 0;
  for (int i = 0; i < nBytes; i += 2) sum += in.Take<std::uint16_t>();
  return static_cast<std::uint16_t>(sum);
}
