#pragma once

#include <functional>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

#ifdef NDEBUG
constexpr bool kTraceBuilt = false;
#else
constexpr bool kTraceBuilt = true;
#endif

/// Takes trace texts instead of standard error; an empty handler restores the default, which prints if the
/// environment variable GPSENGINE_TRACE is set. The handler runs on whatever thread traces.
void SetTraceHandler(std::function<void(const CString& text)> handler);

bool IsTracing();
void TraceText(const CString& text);

/// A diagnostic text for the developer. No behaviour hangs on it, and a release build compiles it away.
template <class... Args>
void Trace(textformat::Checked<std::type_identity_t<Args>...> format, const Args&... args) {
  if constexpr (kTraceBuilt) {
    if (!IsTracing()) return;
    CString text;
    text.Format(format, args...);
    TraceText(text);
  }
}

#pragma GCC visibility pop
