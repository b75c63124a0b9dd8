#include "gpsengine/platform/messagebox.h"

#include <cstdio>
#include <mutex>

#include "gpsengine/platform/system.h"

namespace {

std::mutex g_Mutex;

MessageBoxHandler& Handler() {
  static auto* const handler = new MessageBoxHandler;
  return *handler;
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
  if (kind == BoxKind::pause) WaitForEnter();
}
