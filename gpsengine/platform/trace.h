#pragma once

#include <functional>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

#ifdef NDEBUG
constexpr bool kTraceBuilt = false;  ///< Trace is disabled in this translation unit.
#else
constexpr bool kTraceBuilt = true;  ///< Trace is enabled in this translation unit.
#endif

/// Takes trace texts instead of standard error; an empty handler restores the default, which prints if the
/// environment variable GPSENGINE_TRACE is set. The handler runs on the tracing thread, one text at a time.
/// Decoders trace with the working record locked, so the handler must not call the engine or a receiver, nor
/// wait for another thread. Its own trace texts are dropped.
void SetTraceHandler(std::function<void(const CString& text)> handler);

/// Whether trace texts are shown.
bool IsTracing();
/// Shows one formatted text. Called by Trace.
void TraceText(const CString& text);

/// Diagnostic output for developers; compiled out in release builds.
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
