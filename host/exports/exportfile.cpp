#include "host/exports/exportfile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "host/run/failure.h"

namespace host {

namespace {

// For so long, in milliseconds, a pipe may be full.
constexpr int kPatience = 2000;

Failure CannotWrite(const ExportPath& path, int reason) {
  std::string text = std::strerror(reason);
  if (reason == ENXIO) text = "nobody reads it";
  if (reason == EAGAIN) text = "its reader does not take what is written";
  return Failure(ExitCode::failed, "cannot write " + path.path + " (" + path.option + "): " + text);
}

bool IsSameFile(const struct stat& about, const std::string& path) {
  struct stat other {};
  return stat(path.c_str(), &other) == 0 && about.st_dev == other.st_dev && about.st_ino == other.st_ino;
}

void RefuseInput(const ExportPath& path) {
  struct stat about {};
  if (stat(path.path.c_str(), &about) != 0 || !S_ISREG(about.st_mode)) return;
  const auto is_same = [&](const std::string& input) { return IsSameFile(about, input); };
  if (std::any_of(path.inputs.begin(), path.inputs.end(), is_same)) {
    throw Failure(ExitCode::usage, path.option + ' ' + path.path + " is the recording itself");
  }
}

}  // namespace

GrowingFile::GrowingFile(ExportPath path) : path_(std::move(path)) {
  RefuseInput(path_);
  // A pipe that nobody reads would hold the program up.
  descriptor_ = UniqueDescriptor(
      open(path_.path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666));
  struct stat about {};
  if (!descriptor_ || fstat(descriptor_.Get(), &about) != 0) throw CannotWrite(path_, errno);
  seekable_ = S_ISREG(about.st_mode);
  Resize(0);
}

void GrowingFile::Resize(off_t size) {
  if (seekable_ && ftruncate(descriptor_.Get(), size) != 0) throw CannotWrite(path_, errno);
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
  return WriteWholeBy(text, [&](std::string_view rest, off_t done) { return WriteOnce(rest, at + done); });
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
    throw CannotWrite(path_, reason);
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

void ReplaceFile(const ExportPath& path, std::string_view text) {
  RefuseInput(path);
  char real[PATH_MAX];
  const std::string place =
      realpath(path.path.c_str(), real) != nullptr ? real : path.path;  // what a link leads to
  struct stat about {};
  const bool exists = stat(place.c_str(), &about) == 0;
  if (exists && !S_ISREG(about.st_mode)) {
    const UniqueDescriptor device(open(place.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!device || !WriteWhole(device.Get(), text)) throw CannotWrite(path, errno);
    return;
  }
  const std::string fresh = place + ".part";
  const UniqueDescriptor file(open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (!file) throw CannotWrite(path, errno);
  if (!WriteWhole(file.Get(), text) || std::rename(fresh.c_str(), place.c_str()) != 0) {
    const int reason = errno;
    std::remove(fresh.c_str());
    throw CannotWrite(path, reason);
  }
}

}  // namespace host
