#include "gpsengine/platform/messagebox.h"

#include <unistd.h>

#include <cstdio>
#include <mutex>

namespace {

std::mutex g_Mutex;

MessageBoxHandler& Handler() {
  static auto* const handler = new MessageBoxHandler;
  return *handler;
}

void WaitForEnter() {
  std::fputs("Press Enter to go on.\n", stderr);
  char c = 0;
  while (read(STDIN_FILENO, &c, 1) == 1 && c != '\n') {
  }
}

}  // namespace

void SetMessageBoxHandler(MessageBoxHandler handler) {
  const std::lock_guard lock(g_Mutex);
  Handler() = std::move(handler);
}

void AfxMessageBox(const CString& text, BoxKind kind) {
  MessageBoxHandler handler;
  {
    const std::lock_guard lock(g_Mutex);
    handler = Handler();
  }
  if (handler) {
    handler(text, kind);
    return;
  }
  std::fprintf(stderr, "%s\n", text.ToUtf8().c_str());
  if (kind == BoxKind::pause && isatty(STDIN_FILENO) == 1) WaitForEnter();
}
