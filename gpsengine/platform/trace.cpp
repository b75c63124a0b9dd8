#include "gpsengine/platform/trace.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {

std::mutex g_Mutex;
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
  const std::lock_guard lock(g_Mutex);
  if (Handler()) {
    Handler()(text);
  } else {
    std::fputs(text.ToUtf8().c_str(), stderr);
  }
}
