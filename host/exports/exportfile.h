#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/run/descriptor.h"

namespace host {

/// Where a file goes, and which option asked for it.
struct ExportPath {
  std::string option, path;
  std::vector<std::string> inputs = {};  ///< The files that the run reads; they are not to be overwritten.
};

/// A file that grows as a run goes and is whole all the while: after what was written stands a tail that
/// completes it, which the next piece overwrites. A disk that is full, or a program that is
/// killed, so leaves a file that ends well. A pipe or a device gets its tail at the end alone.
class GrowingFile {
 public:
  /// Makes the file, or empties it. Throws a Failure if it cannot be written, or is the one that the run
  /// reads.
  explicit GrowingFile(ExportPath path);

  /// The next piece to write.
  std::string& Text() { return text_; }
  /// Writes the text, and a tail after it. Throws a Failure if that does not work; what was written before
  /// then stands with the tail it had, and nothing is written any more.
  void Flush(std::string_view tail);
  /// The last Flush.
  void Close(std::string_view tail);

 private:
  ssize_t WriteOnce(std::string_view text, off_t at);
  bool Write(std::string_view text, off_t at);
  void Resize(off_t size);

  const ExportPath path_;
  UniqueDescriptor descriptor_;
  bool seekable_ = false;
  bool broken_ = false;
  off_t end_ = 0;     // of what is there for good
  std::string tail_;  // after it
  std::string text_;
};

/// Puts a whole file in place at once: a reader finds the old one or the new. Throws a Failure as
/// GrowingFile does.
void ReplaceFile(const ExportPath& path, std::string_view text);

}  // namespace host
