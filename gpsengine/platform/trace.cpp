#include "gpsengine/platform/trace.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "gpsengine/platform/system.h"

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

void Trace(const char* format, ...) {
  if (!kTraceBuilt || !IsTracing() || t_bTracing) return;
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = PrintPlain(format, arguments);
  va_end(arguments);
  const std::lock_guard lock(g_Mutex);
  if (Handler()) {
    t_bTracing = true;
    Handler()(CString::FromUtf8(text));
    t_bTracing = false;
  } else {
    std::fputs(text.c_str(), stderr);
  }
}
