#include "simulator/linespeed.h"

// The C library's <termios.h> knows only the standard rates and cannot be had beside the kernel's own header.
#include <asm/termbits.h>
#include <sys/ioctl.h>

#include <cstddef>

namespace simulator {

int LineSpeed(int descriptor) {
  termios2 settings{};
  if (ioctl(descriptor, TCGETS2, &settings) != 0) return 0;
  return static_cast<int>(settings.c_ospeed);
}

bool MakeRaw(int descriptor, int baud) {
  termios2 settings{};
  if (ioctl(descriptor, TCGETS2, &settings) != 0) return false;
  settings.c_iflag = 0;
  settings.c_oflag = 0;
  settings.c_lflag = 0;
  settings.c_cflag = BOTHER | CS8 | CREAD | CLOCAL;
  settings.c_ispeed = settings.c_ospeed = static_cast<speed_t>(baud);
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  return ioctl(descriptor, TCSETS2, &settings) == 0;
}

std::string HeardAt(std::string_view bytes, int sent_baud, int heard_baud) {
  constexpr std::size_t kFrameBits = 10;  // start bit, eight data bits from the lowest on, stop bit
  const auto level = [bytes](double bit) {
    const auto index = static_cast<std::size_t>(bit);
    const std::size_t byte = index / kFrameBits, place = index % kFrameBits;
    if (byte >= bytes.size() || place == kFrameBits - 1) return true;  // the line at rest is high
    return place > 0 && (static_cast<unsigned char>(bytes[byte]) >> (place - 1) & 1) != 0;
  };
  const double bit = static_cast<double>(sent_baud) / heard_baud;  // the listener's bit, in the sender's
  const double end = static_cast<double>(bytes.size() * kFrameBits);
  std::string heard;
  for (double t = 0; t < end;) {
    if (level(t)) {  // waits for a start bit
      t += std::min(bit, 1.0) / 16;
      continue;
    }
    unsigned value = 0;
    for (unsigned i = 0; i < 8; ++i) value |= level(t + (1.5 + i) * bit) ? 1U << i : 0U;
    heard += static_cast<char>(value);
    t += 9.5 * bit;  // on at the stop bit, right or wrong
  }
  return heard;
}

}  // namespace simulator
