#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

namespace host {

/// Owns a file descriptor; -1 is none.
class UniqueDescriptor {
 public:
  UniqueDescriptor() = default;
  explicit UniqueDescriptor(int descriptor) : descriptor_(descriptor) {}
  UniqueDescriptor(UniqueDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~UniqueDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  int Get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

 private:
  int descriptor_ = -1;
};

/// Writes all of it by `write_some(rest, done)`, which does as write(2) does with the bytes after the first
/// `done`. False, with the reason in errno, if that does not work.
template <class WriteSome>
bool WriteWholeBy(std::string_view bytes, WriteSome write_some) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t written = write_some(bytes.substr(done), static_cast<off_t>(done));
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) done += static_cast<std::size_t>(written);
  }
  return true;
}
/// Writes all of it to where the descriptor stands, or from `at` on.
///@{
inline bool WriteWhole(int descriptor, std::string_view bytes) {
  return WriteWholeBy(
      bytes, [&](std::string_view rest, off_t) { return write(descriptor, rest.data(), rest.size()); });
}
inline bool WriteWhole(int descriptor, std::string_view bytes, off_t at) {
  return WriteWholeBy(bytes, [&](std::string_view rest, off_t done) {
    return pwrite(descriptor, rest.data(), rest.size(), at + done);
  });
}
///@}

}  // namespace host
