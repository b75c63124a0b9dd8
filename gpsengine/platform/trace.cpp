#include "gpsengine/platform/trace.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {

std::recursive_mutex g_Mutex;  // a handler may trace
thread_local bool t_bTracing = false;
std::atomic<bool> g_bTracing{std::getenv("GPSENGINE_TRACE") != nullptr};

std::function<void(const CString&)>& Handler() {
  static auto* const handler = new std::function<void(const CString&)>;
  return *handler;
}

}  // namespace

void SetTraceHandler(std::function<void(const CString& text)> handler) {
  const std::lock_guard lock(g_Mutex);
  g_bTracing = handler != nullptr || std::getenv("GPSENGINE_TRACE") != nullptr;
  Handler() = std::move(handler);
}

bool IsTracing() {
  return g_bTracing;
}

void TraceText(const CString& text) {
  if (t_bTracing) return;
  const std::lock_guard lock(g_Mutex);
  if (Handler()) {
    t_bTracing = true;
    Handler()(text);
    t_bTracing = false;
  } else {
    std::fputs(text.ToUtf8().c_str(), stderr);
  }
}
