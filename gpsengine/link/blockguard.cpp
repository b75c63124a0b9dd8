#include "gpsengine/link/blockguard.h"

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
  // Sentences have far fewer of the letter that is looked for first than of "$".
  const bool has_tag = bytes.find(kTag.substr(1)) != bytes.npos || Begun(bytes, kTag) > 0;
  if (is_idle && !has_tag && Begun(bytes, kSync) == 0) return bytes;
  out_.assign(std::exchange(kept_, {}));
  for (const char byte : bytes) PassByte(byte);
  const std::size_t begun = Begun(out_, kSync);
  kept_ = out_.substr(out_.size() - begun);
  out_.resize(out_.size() - begun);
  return out_;
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
