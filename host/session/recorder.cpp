#include "host/session/recorder.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "host/run/failure.h"

namespace host {

Recorder::Recorder(const std::string& file)
    : path_(file), file_(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
  if (!file_) throw Failure(ExitCode::failed, "cannot record to " + path_ + ": " + std::strerror(errno));
}

void Recorder::OnBytes(std::string_view bytes) {
  if (WriteWhole(file_.Get(), bytes)) return;
  throw Failure(ExitCode::failed, "recording to " + path_ + " has failed: " + std::strerror(errno));
}

}  // namespace host
