#include "host/exports/rinexfile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace host {

bool RinexFile::Open(const std::string& path) {
  path_ = path;
  end_ = 0;
  descriptor_ = UniqueDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  return IsOpen() || Fail();
}

bool RinexFile::Append(std::string_view text) {
  if (!WriteWhole(descriptor_.Get(), text, end_)) {
    const int reason = errno;
    [[maybe_unused]] const int cut = ftruncate(descriptor_.Get(), end_);
    errno = reason;
    return Fail();
  }
  end_ += static_cast<off_t>(text.size());
  return true;
}

bool RinexFile::ReplaceHead(std::string_view text) {
  return WriteWhole(descriptor_.Get(), text, 0) || Fail();
}

bool RinexFile::Fail() {
  error_ = "cannot write " + path_ + ": " + std::strerror(errno);
  return false;
}

}  // namespace host
