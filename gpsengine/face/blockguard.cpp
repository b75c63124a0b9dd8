#include "gpsengine/face/blockguard.h"

#include <algorithm>
#include <utility>

namespace gps {

namespace {

constexpr std::string_view kTag = "$BIN";
constexpr std::string_view kSync = "\xAA\x44\x12";

// The bytes of a block by its number, the head with it; 0 for a number that the library does not know.
std::size_t LengthOf(char number) {
  return number == 95 ? 140 : number == 96 ? 312 : 0;
}

// How many bytes at the end are the beginning of `whole`, but not all of it.
std::size_t Begun(std::string_view bytes, std::string_view whole) {
  for (std::size_t count = whole.size() - 1; count > 0; --count) {
    if (bytes.ends_with(whole.substr(0, count))) return count;
  }
  return 0;
}

}  // namespace

std::string_view BlockGuard::Pass(std::string_view bytes) {
  const bool is_idle = kept_.empty() && head_.empty() && left_ == 0;
  // The search stops at every first letter, of which sentences have few: an I is rare, B is in "GBGSV".
  const bool has_tag = bytes.find(kTag.substr(2)) != bytes.npos || Begun(bytes, kTag) > 0;
  if (is_idle && !has_tag && Begun(bytes, kSync) == 0) return bytes;
  out_.assign(std::exchange(kept_, {}));
  while (!bytes.empty()) bytes.remove_prefix(Take(bytes));
  const std::size_t begun = Begun(out_, kSync);
  kept_ = out_.substr(out_.size() - begun);
  out_.resize(out_.size() - begun);
  return out_;
}

/// Passes on what lies between blocks at once, all else a byte at a time. Gives how many bytes that were.
std::size_t BlockGuard::Take(std::string_view bytes) {
  const bool is_between = head_.empty() && left_ == 0;
  const std::size_t count = is_between ? std::min(bytes.find(kTag[0]), bytes.size()) : 0;
  if (count == 0) {
    PassByte(bytes.front());
    return 1;
  }
  out_.append(bytes, 0, count);
  return count;
}

void BlockGuard::PassByte(char byte) {
  out_ += byte;
  const char before = std::exchange(last_, byte);
  if (left_ > 0) {
    if (--left_ == 0 && before == '\r' && byte == '\n') out_ += '\n';
    return;
  }
  if (head_.size() == kTag.size()) {
    const std::size_t length = LengthOf(byte);
    if (length > 0) left_ = length - head_.size() - 1;
    head_.clear();
  } else if (byte == kTag[head_.size()]) {
    head_ += byte;
  } else {
    head_.assign(byte == kTag[0] ? 1 : 0, kTag[0]);
  }
}

}  // namespace gps
