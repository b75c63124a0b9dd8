#pragma once

#include <string>
#include <string_view>

namespace simulator {

/// The rate, in bits a second, that was last set on a terminal or on the other side of a pseudo-terminal; 0
/// if the descriptor has none. Any rate, not only the standard ones.
int LineSpeed(int descriptor);

/// Makes a terminal carry bytes as they are, at that rate. Sets errno and gives false on failure.
bool MakeRaw(int descriptor, int baud);

/// What a serial port that listens at `heard_baud` makes of bytes sent back to back at `sent_baud`, eight
/// bits and no parity: it samples the line at its own pace.
std::string HeardAt(std::string_view bytes, int sent_baud, int heard_baud);

}  // namespace simulator
