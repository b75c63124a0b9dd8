#include "host/line/linetap.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace host {

namespace {

// Longer than a sentence of any make. What is longer is noise.
constexpr std::size_t kLongestSentence = 512;

}  // namespace

LineTap::LineTap(CGPSEngine& engine) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot keep what the port sends");
  }
  // Room for what comes while the receiver is being started, which takes some models half a minute.
  fcntl(ends[1], F_SETPIPE_SZ, 1 << 20);
  read_ = UniqueDescriptor(ends[0]);
  write_ = UniqueDescriptor(ends[1]);
  // The engine opens the pipe for itself.
  engine.m_strRecordFile = ("/proc/self/fd/" + std::to_string(write_.Get())).c_str();
  engine.m_bRecordRaw = true;
}

void LineTap::Take(std::string& bytes) const {
  char piece[4096];
  for (ssize_t count; (count = read(read_.Get(), piece, sizeof piece)) > 0;) {
    bytes.append(piece, static_cast<std::size_t>(count));
  }
}

// True when `c` has ended a sentence, which is gone at the next byte.
bool SentenceFinder::Next(char c) {
  if (sentence_.ends_with('\n')) sentence_.clear();
  if (c == '$' || (c == '!' && sentence_.empty())) {
    sentence_ = c;
  } else if (sentence_.empty()) {
    return false;
  } else if (c == '\r' || c == '\n') {
    sentence_ += "\r\n";
    return true;
  } else if (c < ' ' || c > '~' || sentence_.size() >= kLongestSentence) {
    sentence_.clear();
  } else {
    sentence_ += c;
  }
  return false;
}

}  // namespace host
