#include "host/corrections/rtcm.h"

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr char kPreamble = '\xD3';
constexpr std::size_t kHead = 3, kChecksum = 3;

constexpr std::array<unsigned, 256> MakeCrcTable() {
  std::array<unsigned, 256> table{};
  for (unsigned i = 0; i < 256; ++i) {
    unsigned crc = i << 16;
    for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ ((crc & 0x800000) != 0 ? 0x1864CFB : 0);
    table[i] = crc & 0xFFFFFF;
  }
  return table;
}

unsigned ByteAt(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

/// How long the message is that begins there, kHead if that takes more bytes to say; 0 if none begins there.
std::size_t FrameLength(std::string_view bytes) {
  if (bytes.size() > 1 && (ByteAt(bytes, 1) & 0xFC) != 0) return 0;
  if (bytes.size() < kHead) return kHead;
  return kHead + (ByteAt(bytes, 1) << 8 | ByteAt(bytes, 2)) + kChecksum;
}

bool HasGoodChecksum(std::string_view frame) {
  const std::size_t end = frame.size() - kChecksum;
  const unsigned sum = ByteAt(frame, end) << 16 | ByteAt(frame, end + 1) << 8 | ByteAt(frame, end + 2);
  return Crc24Q(frame.substr(0, end)) == sum;
}

int TypeOf(std::string_view frame) {
  if (frame.size() < kHead + 2 + kChecksum) return 0;
  return static_cast<int>(ByteAt(frame, kHead) << 4 | ByteAt(frame, kHead + 1) >> 4);
}

}  // namespace

unsigned Crc24Q(std::string_view bytes) {
  static constexpr auto kTable = MakeCrcTable();
  unsigned crc = 0;
  for (const char c : bytes)
    crc = (crc << 8 & 0xFFFFFF) ^ kTable[(crc >> 16 ^ static_cast<unsigned char>(c)) & 0xFF];
  return crc;
}

void RtcmFramer::Feed(std::string_view bytes, const Take& take) {
  held_ += bytes;
  const std::string_view all = held_;
  std::size_t other = 0, at = 0;  // where bytes begin that are no message, and where one may begin
  const auto take_other = [&] {
    for (; other < at; other += kLongestPiece)
      take(all.substr(other, std::min(kLongestPiece, at - other)), std::nullopt);
    other = at;
  };
  while ((at = std::min(all.find(kPreamble, at), all.size())) < all.size()) {
    const std::size_t length = FrameLength(all.substr(at));
    if (length > all.size() - at) break;  // the rest is to come
    const bool whole = length > 0 && HasGoodChecksum(all.substr(at, length));
    if (!whole) {
      bad_ += length > 0 ? 1 : 0;
      ++at;
      continue;
    }
    take_other();
    take(all.substr(at, length), TypeOf(all.substr(at, length)));
    other = at += length;
  }
  take_other();
  held_.erase(0, at);
}

}  // namespace host
