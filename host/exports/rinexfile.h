#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "host/run/descriptor.h"

namespace host {

/// A file that grows at its end and whose head may be written again. What does not fit on the disk leaves it
/// as it was.
class RinexFile {
 public:
  /// Makes the file, or empties the one that is there. False if that does not work.
  bool Open(const std::string& path);
  void Close() { descriptor_ = UniqueDescriptor(); }
  bool IsOpen() const { return static_cast<bool>(descriptor_); }
  /// Writes after the end. False if it could not.
  bool Append(std::string_view text);
  /// Writes over the first bytes. False if it could not.
  bool ReplaceHead(std::string_view text);
  /// What could not be done, in words.
  const std::string& Error() const { return error_; }

 private:
  bool Fail();

  UniqueDescriptor descriptor_;
  std::string path_, error_;
  off_t end_ = 0;
};

}  // namespace host
