#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "host/descriptor.h"

namespace host {

/// A file that grows as a run goes and is whole all the while: behind what was written stands a tail that
/// completes it, in the place of which the next piece comes. A disk that is full, or a program that is
/// killed, so leaves a file that ends well. A pipe or a device gets its tail at the end alone.
class GrowingFile {
 public:
  /// Makes the file, or empties it. `option` is the one that asked for it, for the texts of failures. Throws
  /// a Failure if it cannot be written, or is the file `source` that the run reads.
  GrowingFile(std::string option, std::string path, const std::string& source);

  /// What is to be written next.
  std::string& Text() { return text_; }
  /// Writes the text, and a tail behind it. Throws a Failure if that does not work; what was written before
  /// then stands with the tail it had, and nothing is written any more.
  void Flush(std::string_view tail);
  /// The last Flush.
  void Close(std::string_view tail);

 private:
  ssize_t WriteOnce(std::string_view text, off_t at);
  bool Write(std::string_view text, off_t at);
  void Resize(off_t size);

  const std::string option_, path_;
  UniqueDescriptor descriptor_;
  bool seekable_ = false;
  bool broken_ = false;
  off_t end_ = 0;     // of what is there for good
  std::string tail_;  // behind it
  std::string text_;
};

}  // namespace host
