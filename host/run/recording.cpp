#include "host/run/recording.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "host/run/failure.h"

namespace host {

namespace {

constexpr std::size_t kPiece = 65536;

}  // namespace

Recording::Recording(const std::string& path)
    : path_(path == "-" ? "standard input" : path), buffer_(kPiece, '\0') {
  descriptor_ = UniqueDescriptor(path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat about {};
  if (!descriptor_ || fstat(descriptor_.Get(), &about) != 0) {
    throw Failure(ExitCode::failed, "cannot read " + path_ + ": " + std::strerror(errno));
  }
  seekable_ = S_ISREG(about.st_mode);
  size_ = seekable_ ? about.st_size : 0;
  head_ = ReadBytes();
  while (head_.size() == 1) {  // a pipe's; it takes two to tell a packed file
    const auto piece = ReadBytes();
    if (piece.empty()) break;
    head_ += piece;
  }
  if (Unpacker::IsPacked(head_)) {
    unpacker_.emplace();
    head_ = Unpack(head_);
    if (head_.empty()) head_ = ReadPiece();
  }
  unpacked_ = head_.size();
  text_log_ = head_.find('\r') == std::string::npos;
  if (!seekable_) held_ = head_;
  while (text_log_) {
    const auto piece = ReadPiece();
    if (piece.empty()) break;
    text_log_ = piece.find('\r') == piece.npos;
    if (!seekable_) held_ += piece;
  }
  Rewind();
}

/// The next piece of what the file holds, good until the next one is read; empty at the end.
std::string_view Recording::ReadPiece() {
  std::string_view bytes;
  do {
    bytes = ReadBytes();
    if (!unpacker_ || bytes.empty()) break;
    bytes = piece_ = Unpack(bytes);
  } while (bytes.empty());
  unpacked_ += bytes.size();
  return bytes;
}

std::string Recording::Unpack(std::string_view packed) try {
  return unpacker_->Unpack(packed);
} catch (const std::runtime_error& error) {
  throw Failure(ExitCode::failed, "cannot unpack " + path_ + ": " + error.what());
}

std::string_view Recording::ReadBytes() {
  ssize_t count;
  do {
    count = read(descriptor_.Get(), buffer_.data(), buffer_.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) throw Failure(ExitCode::failed, "cannot read " + path_ + ": " + std::strerror(errno));
  done_ += count;
  return std::string_view(buffer_).substr(0, static_cast<std::size_t>(count));
}

void Recording::Rewind() {
  if (seekable_) {
    lseek(descriptor_.Get(), 0, SEEK_SET);
    done_ = 0;
    unpacked_ = 0;
    if (unpacker_) unpacker_.emplace();
  } else {
    Append(held_);
    rest_ = mended_;
    is_mended_ = true;
    held_.clear();
    held_.shrink_to_fit();
  }
}

std::string_view Recording::Next(std::size_t most) {
  while (rest_.size() < most && !ended_) ReadOn();
  const auto next = rest_.substr(0, most);
  rest_.remove_prefix(next.size());
  return next;
}

/// Puts the next piece behind what is left. One that has all its line ends is taken as it lies where nothing
/// is left.
void Recording::ReadOn() {
  if (is_mended_) {
    mended_.erase(0, mended_.size() - rest_.size());
  } else {
    mended_ = rest_;  // the next piece takes its place
  }
  const auto piece = ReadPiece();
  ended_ = piece.empty();
  is_mended_ = text_log_ || ended_ || !mended_.empty();
  if (is_mended_) Append(piece);
  if (ended_ && text_log_ && in_line_) mended_ += "\r\n";
  if (ended_ && unpacker_ && !unpacker_->IsWhole()) {
    Complain(path_ + " ends in the middle of its packed data");
  }
  rest_ = is_mended_ ? mended_ : piece;
}

void Recording::Append(std::string_view piece) {
  if (!piece.empty()) in_line_ = piece.back() != '\n';
  if (!text_log_) {
    mended_ += piece;
    return;
  }
  while (!piece.empty()) {
    const auto end = piece.find('\n');
    mended_ += piece.substr(0, end);
    if (end == std::string_view::npos) return;
    mended_ += "\r\n";
    piece.remove_prefix(end + 1);
  }
}

std::string NameOfUnpacked(const std::string& path) {
  const UniqueDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  char head[2] = {};
  if (!file || read(file.Get(), head, 2) != 2 || !Unpacker::IsPacked({head, 2})) return path;
  const int copy = memfd_create("recording", MFD_CLOEXEC);
  Recording recording(path);
  for (std::string_view piece; !(piece = recording.Next(kPiece)).empty();) {
    if (!WriteWhole(copy, piece))
      throw Failure(ExitCode::failed, "cannot unpack " + path + ": " + std::strerror(errno));
  }
  return "/proc/self/fd/" + std::to_string(copy);
}

}  // namespace host
