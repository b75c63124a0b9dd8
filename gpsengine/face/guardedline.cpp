#include "gpsengine/face/guardedline.h"

namespace gps {

namespace {

constexpr int kLeastBlock = 128;

}  // namespace

int GuardedLine::Read(void* data, int most, DWORD ms) {
  if (held_.empty()) {
    const int room = most - most / kLeastBlock;  // for what the guard adds
    const int count = line_->Read(data, room, ms);
    if (count < 0) {
      if (watcher_.on_gone) watcher_.on_gone();
      return count;
    }
    const std::string_view bytes(static_cast<const char*>(data), static_cast<std::size_t>(count));
    if (watcher_.on_bytes) watcher_.on_bytes(bytes, count == room);
    held_ = guard_.Pass(bytes);
  }
  const std::size_t taken = held_.copy(static_cast<char*>(data), static_cast<std::size_t>(most));
  held_.erase(0, taken);
  return static_cast<int>(taken);
}

}  // namespace gps
