#include "host/run/recording.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/run/failure.h"

namespace host {

namespace {

constexpr std::size_t kPiece = 65536;

}  // namespace

Recording::Recording(const std::string& path) : path_(path == "-" ? "standard input" : path) {
  descriptor_ = UniqueDescriptor(path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat about {};
  if (!descriptor_ || fstat(descriptor_.Get(), &about) != 0) {
    throw Failure(ExitCode::failed, "cannot read " + path_ + ": " + std::strerror(errno));
  }
  seekable_ = S_ISREG(about.st_mode);
  size_ = seekable_ ? about.st_size : 0;
  head_ = ReadPiece();
  text_log_ = head_.find('\r') == std::string::npos;
  if (!seekable_) held_ = head_;
  while (text_log_) {
    const std::string piece = ReadPiece();
    if (piece.empty()) break;
    text_log_ = piece.find('\r') == std::string::npos;
    if (!seekable_) held_ += piece;
  }
  Rewind();
}

std::string Recording::ReadPiece() {
  std::string piece(kPiece, '\0');
  ssize_t count;
  do {
    count = read(descriptor_.Get(), piece.data(), piece.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) throw Failure(ExitCode::failed, "cannot read " + path_ + ": " + std::strerror(errno));
  piece.resize(static_cast<std::size_t>(count));
  return piece;
}

void Recording::Rewind() {
  if (seekable_) {
    lseek(descriptor_.Get(), 0, SEEK_SET);
  } else {
    Append(held_);
    held_.clear();
    held_.shrink_to_fit();
  }
}

std::string_view Recording::Next(std::size_t most) {
  while (ready_.size() - taken_ < most && !ended_) {
    ready_.erase(0, taken_);
    taken_ = 0;
    const std::string piece = ReadPiece();
    if (piece.empty()) {
      ended_ = true;
      if (text_log_ && in_line_) ready_ += "\r\n";
    } else {
      Append(piece);
    }
  }
  const auto next = std::string_view(ready_).substr(taken_, most);
  taken_ += next.size();
  return next;
}

void Recording::Append(std::string_view piece) {
  done_ += static_cast<std::int64_t>(piece.size());
  if (!piece.empty()) in_line_ = piece.back() != '\n';
  if (!text_log_) {
    ready_ += piece;
    return;
  }
  while (!piece.empty()) {
    const auto end = piece.find('\n');
    ready_ += piece.substr(0, end);
    if (end == std::string_view::npos) return;
    ready_ += "\r\n";
    piece.remove_prefix(end + 1);
  }
}

}  // namespace host
