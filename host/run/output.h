#pragma once

#include <string>

namespace host {

/// Whole lines on their way to a descriptor. Who makes lines appends them to Text(); Flush sends them, which
/// every loop does before it waits for anything, so that a reader of the output has each line as soon as it
/// is there.
class Output {
 public:
  explicit Output(int descriptor) : descriptor_(descriptor) {}

  std::string& Text() { return text_; }
  /// False once nobody reads the descriptor any more, which is an orderly end and no error. Throws a Failure
  /// if it cannot be written, such as on a full disk.
  bool Flush();
  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
  bool closed_ = false;
  std::string text_;
};

}  // namespace host
