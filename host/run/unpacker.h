#pragma once

#include <zlib.h>

#include <string>
#include <string_view>

namespace host {

/// Unpacks a gzip file, whose bytes come in pieces of any size.
class Unpacker {
 public:
  Unpacker();
  ~Unpacker();
  Unpacker(const Unpacker&) = delete;
  Unpacker& operator=(const Unpacker&) = delete;

  /// Whether a file that begins so is such a file.
  static bool IsPacked(std::string_view head) { return head.starts_with("\x1F\x8B"); }

  /// What the next bytes of the file hold, which may be nothing yet. Throws a std::runtime_error that says
  /// what is wrong with them.
  std::string Unpack(std::string_view packed);
  /// The file may end here.
  bool IsWhole() const { return at_end_; }

 private:
  z_stream stream_{};
  bool at_end_ = false;  // of a member, of which a file may have several
};

}  // namespace host
