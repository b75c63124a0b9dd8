#include "gpsengine/rawdata/oemmessage.h"

#include <array>

// OEM binary messages: a head of mostly 28 bytes, a body, and a CRC-32 over both.

namespace rawdata {

namespace {

constexpr std::array<std::uint32_t, 256> kCrc = [] {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    table[i] = i;
    for (int bit = 0; bit < 8; ++bit)
      table[i] = (table[i] & 1) != 0 ? table[i] >> 1 ^ 0xEDB88320U : table[i] >> 1;
  }
  return table;
}();

bool HasGoodCrc(const BlockReader& block, std::size_t length) {
  std::uint32_t crc = 0;
  for (std::size_t i = 0; i < length; ++i) crc = crc >> 8 ^ kCrc[(crc ^ block.Byte(i)) & 0xFF];
  return crc == block.At<std::uint32_t>(length);
}

}  // namespace

OemBody FindBody(const BlockReader& block) {
  constexpr std::size_t kLeastHead = 28;
  constexpr unsigned kSourceMask = 0x1F, kSecondAntenna = 1, kNotBinary = 0xE0;
  if (block.Size() < kLeastHead + 4) return {};
  const std::size_t head = block.Byte(3), length = block.At<std::uint16_t>(8);
  if (head < kLeastHead || head % 2 != 0 || length % 2 != 0) return {};
  if (block.Size() < head + length + 4 || !HasGoodCrc(block, head + length)) return {};
  const unsigned type = block.Byte(6);
  if ((type & kNotBinary) != 0 || (type & kSourceMask) == kSecondAntenna) return {};
  return {head, length};
}

}  // namespace rawdata
