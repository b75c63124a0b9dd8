#pragma once

#include <functional>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

#ifdef NDEBUG
constexpr bool kTraceBuilt = false;  ///< Trace does nothing in this source.
#else
constexpr bool kTraceBuilt = true;  ///< Trace is compiled in this source.
#endif

/// Takes trace texts instead of standard error; an empty handler restores the default, which prints if the
/// environment variable GPSENGINE_TRACE is set. The handler runs on whatever thread traces, one text at a
/// time. Decoders trace with the working record locked: the handler calls no engine and no receiver, and
/// waits for no other thread. What it traces itself is shown to nobody.
void SetTraceHandler(std::function<void(const CString& text)> handler);

/// Whether anybody would see a trace text.
bool IsTracing();
/// Shows one text. Trace calls it with a text that it has formatted.
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
