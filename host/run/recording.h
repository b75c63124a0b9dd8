#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/run/descriptor.h"

namespace host {

/// A file of a receiver's bytes, read in pieces. A file that holds no carriage return at all is a text log,
/// saved by a tool that dropped them: each of its lines gets its line end back.
class Recording {
 public:
  /// Opens a file, or standard input for "-". Throws a Failure that names the file if it cannot be read.
  explicit Recording(const std::string& path);

  /// The next bytes, at most `most`, and fewer only at the end; empty behind it. Good until the next call.
  std::string_view Next(std::size_t most);
  bool IsTextLog() const { return text_log_; }
  std::int64_t Size() const { return size_; }
  /// Bytes of the file that Next has used up.
  std::int64_t Done() const { return done_; }
  /// The first piece of the file, up to 64 KiB of it, as it stands in the file.
  std::string_view Head() const { return head_; }

 private:
  std::string ReadPiece();
  void Rewind();
  void Append(std::string_view piece);

  const std::string path_;
  UniqueDescriptor descriptor_;
  bool seekable_ = true;
  bool text_log_ = false;
  bool in_line_ = false;  // the last byte that was read ended no line
  bool ended_ = false;
  std::int64_t size_ = 0;
  std::int64_t done_ = 0;
  std::string head_;
  std::string held_;       // what of a stream that cannot be rewound was read to look for a carriage return
  std::string ready_;      // read and given its line ends
  std::size_t taken_ = 0;  // of ready_, by Next
};

}  // namespace host
