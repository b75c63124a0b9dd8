#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace gps {

/// Sees to it that binary blocks reach the library whole. The library passes over the byte after a "$BIN"
/// block as if it ended a line, which takes the "$" off a message that follows at once; and it does not know
/// an OEM message again whose three sync bytes come in two reads. So a line feed is put after each block,
/// and the beginning of a sync is kept until the rest of it is here.
class BlockGuard {
 public:
  /// What of the bytes goes on to the library now: the bytes themselves, or a copy that is good until the
  /// next call.
  std::string_view Pass(std::string_view bytes);

 private:
  std::size_t Take(std::string_view bytes);
  void PassByte(char byte);

  std::string kept_;      // before the next bytes
  std::string out_;       // what was passed on last, if it was not the bytes themselves
  std::string head_;      // of a block, as far as it has come
  std::size_t left_ = 0;  // of the current block
  char last_ = 0;         // the byte before, within a block
};

}  // namespace gps

#pragma GCC visibility pop
