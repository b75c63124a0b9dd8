#include "host/run/output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "host/run/failure.h"

namespace host {

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
