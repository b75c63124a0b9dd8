#include "host/run/boxes.h"

#include <poll.h>

#include <cerrno>

#include "host/run/failure.h"

namespace host {

Boxes::Boxes() {
  SetMessageBoxHandler([this](const CString& text, BoxKind kind) { Show(text, kind); });
}

Boxes::~Boxes() {
  SetMessageBoxHandler({});
}

void Boxes::Show(const CString& text, BoxKind kind) const {
  const bool waits = kind == BoxKind::pause && isatty(STDIN_FILENO) != 0;
  Complain(text.ToUtf8() + (waits ? " (Enter goes on)" : ""));
  if (!waits) return;
  const int keys = has_keyboard_ ? STDIN_FILENO : go_on_.Descriptor();
  go_on_.Clear();  // Enter that was pressed when no box was there is for none
  pollfd ends[] = {{keys, POLLIN, 0}, {released_.Descriptor(), POLLIN, 0}};
  while (poll(ends, 2, -1) < 0 && errno == EINTR) {
  }
  if (ends[0].revents != 0) {
    char line[256];
    [[maybe_unused]] const auto taken = read(keys, line, sizeof line);
  }
}

}  // namespace host
