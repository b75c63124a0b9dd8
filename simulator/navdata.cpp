#include "simulator/navdata.h"

namespace simulator {

std::array<std::uint32_t, 10> Subframe(int id, const GpsTime& time) {
  std::array<std::uint32_t, 10> words;
  words.fill(0xAAAAAA);
  words[0] = 0x8BU << 16;
  // The count of 6 second subframes that the next one will begin with, in the upper 17 bits.
  const unsigned next = (static_cast<unsigned>(time.seconds) / 6 + 1) % 100800;
  words[1] = next << 7 | static_cast<unsigned>(id) << 2;
  return words;
}

}  // namespace simulator
