#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace host {

/// Takes a gpsd server's own lines, which are JSON objects, out of its raw stream. What an object of the
/// class ERROR says goes to standard error.
class GpsdLines {
 public:
  /// `server` is how the user knows it.
  explicit GpsdLines(std::string server) : server_(std::move(server)) {}
  /// The receiver's among the next bytes. What may be the beginning of an object is kept until there is more.
  std::string Strip(std::string_view bytes);

 private:
  void EndLine();

  const std::string server_;
  std::string held_;  // as much of the beginning of an object as has come
  std::string line_;  // the beginning of the object at hand
  std::size_t length_ = 0;
};

}  // namespace host
