#include "host/run/boxes.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <cstdint>

#include "host/run/failure.h"

namespace host {

namespace {

void Signal(const UniqueDescriptor& event) {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = write(event.Get(), &one, sizeof one);
}

}  // namespace

Boxes::Boxes()
    : released_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), go_on_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  SetMessageBoxHandler([this](const CString& text, BoxKind kind) { Show(text, kind); });
}

Boxes::~Boxes() {
  SetMessageBoxHandler({});
}

void Boxes::Release() {
  Signal(released_);
}

void Boxes::GoOn() {
  Signal(go_on_);
}

void Boxes::Show(const CString& text, BoxKind kind) const {
  const bool waits = kind == BoxKind::pause && isatty(STDIN_FILENO) != 0;
  Complain(text.ToUtf8() + (waits ? " (Enter goes on)" : ""));
  if (!waits) return;
  char line[256];
  const int keys = has_keyboard_ ? STDIN_FILENO : go_on_.Get();
  // Enter that was pressed when no box was there is for none.
  [[maybe_unused]] const auto earlier = read(go_on_.Get(), line, sizeof line);
  pollfd ends[] = {{keys, POLLIN, 0}, {released_.Get(), POLLIN, 0}};
  while (poll(ends, 2, -1) < 0 && errno == EINTR) {
  }
  if (ends[0].revents != 0) {
    [[maybe_unused]] const auto taken = read(keys, line, sizeof line);
  }
}

}  // namespace host
