#include "host/exportfile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "host/failure.h"

namespace host {

namespace {

// For so long, in milliseconds, a pipe may be full.
constexpr int kPatience = 2000;

Failure CannotWrite(const std::string& option, const std::string& path, int reason) {
  std::string text = std::strerror(reason);
  if (reason == ENXIO) text = "nobody reads it";
  if (reason == EAGAIN) text = "its reader does not take what is written";
  return Failure(ExitCode::failed, "cannot write " + path + " (" + option + "): " + text);
}

bool IsSameFile(const struct stat& about, const std::string& path) {
  struct stat other {};
  return stat(path.c_str(), &other) == 0 && about.st_dev == other.st_dev && about.st_ino == other.st_ino;
}

void RefuseSource(const std::string& option, const std::string& path, const std::string& source) {
  struct stat about {};
  if (stat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode) && IsSameFile(about, source)) {
    throw Failure(ExitCode::usage, option + " " + path + " is the recording itself");
  }
}

}  // namespace

GrowingFile::GrowingFile(std::string option, std::string path, const std::string& source)
    : option_(std::move(option)), path_(std::move(path)) {
  RefuseSource(option_, path_, source);
  // A pipe that nobody reads would hold the program up.
  descriptor_ =
      UniqueDescriptor(open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666));
  struct stat about {};
  if (!descriptor_ || fstat(descriptor_.Get(), &about) != 0) throw CannotWrite(option_, path_, errno);
  seekable_ = S_ISREG(about.st_mode);
  Resize(0);
}

void GrowingFile::Resize(off_t size) {
  if (seekable_ && ftruncate(descriptor_.Get(), size) != 0) throw CannotWrite(option_, path_, errno);
}

ssize_t GrowingFile::WriteOnce(std::string_view text, off_t at) {
  if (seekable_) return pwrite(descriptor_.Get(), text.data(), text.size(), at);
  const ssize_t written = write(descriptor_.Get(), text.data(), text.size());
  if (written >= 0 || errno != EAGAIN) return written;
  pollfd room{descriptor_.Get(), POLLOUT, 0};
  if (poll(&room, 1, kPatience) == 0) {
    errno = EAGAIN;
    return -1;
  }
  return write(descriptor_.Get(), text.data(), text.size());
}

bool GrowingFile::Write(std::string_view text, off_t at) {
  while (!text.empty()) {
    const ssize_t written = WriteOnce(text, at);
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
      at += written;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

void GrowingFile::Flush(std::string_view tail) {
  if (broken_) return;
  if (text_.empty() && tail == tail_) return;
  const std::size_t fresh = text_.size();
  const off_t before = end_ + static_cast<off_t>(tail_.size());
  if (seekable_) text_ += tail;
  if (!Write(text_, end_)) {
    const int reason = errno;
    broken_ = true;
    // There was room for the old tail, so that there is now.
    if (seekable_ && Write(tail_, end_)) Resize(before);
    throw CannotWrite(option_, path_, reason);
  }
  end_ += static_cast<off_t>(fresh);
  tail_ = tail;
  text_.clear();
  const off_t now = end_ + static_cast<off_t>(tail_.size());
  if (now < before) Resize(now);
}

void GrowingFile::Close(std::string_view tail) {
  if (!seekable_ && !broken_) text_ += tail;
  Flush(tail);
}

}  // namespace host
