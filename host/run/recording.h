#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/run/descriptor.h"
#include "host/run/unpacker.h"

namespace host {

/// A file of a receiver's bytes, read in pieces. A file that holds no carriage return at all is a text log,
/// saved by a tool that dropped them: each of its lines gets its line end back. A gzip file is read as what
/// it holds.
class Recording {
 public:
  /// Opens a file, or standard input for "-". Throws a Failure that names the file if it cannot be read.
  explicit Recording(const std::string& path);

  /// The next bytes, at most `most`, and fewer only at the end; empty after it. Good until the next call.
  std::string_view Next(std::size_t most);
  bool IsTextLog() const { return text_log_; }
  /// The name for the user.
  const std::string& Name() const { return path_; }
  std::int64_t Size() const { return size_; }
  /// Bytes of the file that Next has used up.
  std::int64_t Done() const { return done_; }
  /// The first piece of what the file holds, as it stands there; 64 KiB of a file that is not packed.
  std::string_view Head() const { return head_; }
  /// After the end: whether that piece is all.
  bool IsAllInHead() const { return unpacked_ <= head_.size(); }

 private:
  std::string_view ReadPiece();
  std::string_view ReadBytes();
  std::string Unpack(std::string_view packed);
  void Rewind();
  void ReadOn();
  void Append(std::string_view piece);

  const std::string path_;
  UniqueDescriptor descriptor_;
  std::optional<Unpacker> unpacker_;
  bool seekable_ = true;
  bool text_log_ = false;
  bool in_line_ = false;  // the last byte that was read ended no line
  bool ended_ = false;
  std::int64_t size_ = 0;
  std::int64_t done_ = 0;
  std::size_t unpacked_ = 0;  // bytes that were read since the beginning
  std::string head_;
  std::string held_;        // what of a stream that cannot be rewound was read to look for a carriage return
  std::string buffer_;      // what was read last
  std::string piece_;       // unpacked
  std::string mended_;      // behind what was left of the piece before, with its line ends
  std::string_view rest_;   // that Next has to give, the end of one of them
  bool is_mended_ = false;  // of the last
};

/// The name of a file that holds what a recording holds, for who reads the file by itself: its own, or that
/// of an unpacked copy in memory, which stays for as long as the program runs. A file that cannot be read
/// keeps its name. Throws a Failure if a packed one is damaged.
std::string NameOfUnpacked(const std::string& path);

}  // namespace host
