#include "host/line/wiretap.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace host {

namespace {

// No such line is longer. What is, is noise.
constexpr std::size_t kLongestLine = 200;

bool IsParameterLine(std::string_view line) {
  constexpr std::string_view kHeads[] = {"PMD:", "PER:", "PEM:", "PRTA:"};
  return std::any_of(std::begin(kHeads), std::end(kHeads), [&](auto head) { return line.starts_with(head); });
}

}  // namespace

WireTap::WireTap(CGPSEngine& engine) : file_(memfd_create("gpsengine", MFD_CLOEXEC)) {
  if (!file_) throw std::system_error(errno, std::generic_category(), "cannot keep what the port sends");
  engine.m_strRecordFile = ("/proc/self/fd/" + std::to_string(file_.Get())).c_str();
  engine.m_bRecordRaw = true;
}

std::string WireTap::Take() {
  // The engine writes through a descriptor, and so at a place, of its own.
  std::string bytes;
  char piece[4096];
  for (ssize_t count; (count = read(file_.Get(), piece, sizeof piece)) > 0;) {
    bytes.append(piece, static_cast<std::size_t>(count));
  }
  // What has been taken takes no memory any more.
  const auto length = static_cast<off_t>(bytes.size());
  if (length > 0) {
    fallocate(file_.Get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, taken_, length);
    taken_ += length;
  }
  return bytes;
}

void WireTap::Restart() {
  // The engine opens the file anew.
  [[maybe_unused]] const int result = ftruncate(file_.Get(), 0);
  lseek(file_.Get(), 0, SEEK_SET);
  taken_ = 0;
}

bool WireTap::HasHeard() const {
  struct stat about {};
  return fstat(file_.Get(), &about) == 0 && about.st_size > 0;
}

void ParameterLines::Feed(std::string_view bytes) {
  for (const char c : bytes) {
    if (c != '\r' && c != '\n') {
      if (line_.size() < kLongestLine) line_ += c;
      continue;
    }
    if (IsParameterLine(line_)) lines_.push_back(line_);
    line_.clear();
  }
}

}  // namespace host
