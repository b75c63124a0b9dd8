#include "host/run/output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <string_view>
#include <utility>

#include "host/run/failure.h"

namespace host {

namespace {

std::mutex g_complaints_mutex;

std::function<void(const std::string&)>& ComplaintHandler() {
  static auto* const handler = new std::function<void(const std::string&)>;
  return *handler;
}

}  // namespace

void SetComplaintHandler(std::function<void(const std::string&)> handler) {
  const std::lock_guard lock(g_complaints_mutex);
  ComplaintHandler() = std::move(handler);
}

void Complain(const std::string& text) {
  const std::lock_guard lock(g_complaints_mutex);
  if (ComplaintHandler()) return ComplaintHandler()(text);
  const std::string line = "gpsengine: " + text + "\n";
  // Nothing can be said about a standard error that does not take it.
  [[maybe_unused]] const auto written = write(STDERR_FILENO, line.data(), line.size());
}

bool Output::Flush() {
  std::string_view rest = text_;
  while (!rest.empty() && !closed_) {
    const auto written = write(descriptor_, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EPIPE) {
      closed_ = true;
    } else if (errno == EAGAIN) {  // another program has made the shared terminal or pipe non-blocking
      pollfd room{descriptor_, POLLOUT, 0};
      poll(&room, 1, -1);
    } else if (errno != EINTR) {
      throw Failure(ExitCode::failed, std::string("cannot write the output: ") + std::strerror(errno));
    }
  }
  text_.clear();
  return !closed_;
}

}  // namespace host
