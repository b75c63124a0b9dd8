#include "host/line/recorder.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "host/run/failure.h"

namespace host {

Recorder::Recorder(const std::string& file)
    : path_(file), file_(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
  if (!file_) throw Failure(ExitCode::failed, "cannot record to " + path_ + ": " + std::strerror(errno));
}

Recorder::~Recorder() {
  Write();
}

void Recorder::Begin(CGPSEngine& engine) {
  Take();
  tap_.emplace(engine);
}

void Recorder::Take() {
  if (!Write()) {
    throw Failure(ExitCode::failed, "recording to " + path_ + " has failed: " + std::strerror(errno));
  }
}

bool Recorder::Write() {
  if (!tap_) return true;
  const std::string bytes = tap_->Take();
  heard_ = heard_ || !bytes.empty();
  for (std::string_view rest = bytes; !rest.empty();) {
    const ssize_t count = write(file_.Get(), rest.data(), rest.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace host
