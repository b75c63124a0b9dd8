#include "host/boxes.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <cstdint>

#include "host/failure.h"

namespace host {

Boxes::Boxes() : released_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  SetMessageBoxHandler([this](const CString& text, BoxKind kind) { Show(text, kind); });
}

Boxes::~Boxes() {
  SetMessageBoxHandler({});
}

void Boxes::Release() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = write(released_.Get(), &one, sizeof one);
}

void Boxes::Show(const CString& text, BoxKind kind) const {
  const bool waits = kind == BoxKind::pause && isatty(STDIN_FILENO) != 0;
  Complain(text.ToUtf8() + (waits ? " (Enter goes on)" : ""));
  if (!waits) return;
  pollfd ends[] = {{STDIN_FILENO, POLLIN, 0}, {released_.Get(), POLLIN, 0}};
  while (poll(ends, 2, -1) < 0 && errno == EINTR) {
  }
  char line[256];
  if (ends[0].revents != 0) {
    [[maybe_unused]] const auto taken = read(STDIN_FILENO, line, sizeof line);
  }
}

}  // namespace host
