#pragma once

#include <functional>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

#ifdef NDEBUG
constexpr bool kTraceBuilt = false;  ///< Trace shows nothing.
#else
constexpr bool kTraceBuilt = true;  ///< Trace shows its texts.
#endif

/// Takes trace texts instead of standard error; an empty handler restores the default, which prints if the
/// environment variable GPSENGINE_TRACE is set. The handler runs on the tracing thread, one text at a time.
/// Decoders trace with the working record locked, so the handler must not call the engine or a receiver, nor
/// wait for another thread. Its own trace texts are dropped.
void SetTraceHandler(std::function<void(const CString& text)> handler);

/// Whether trace texts are shown.
bool IsTracing();

/// Diagnostic output for developers, as printf formats it. A release build shows none.
[[gnu::format(printf, 1, 2)]] void Trace(const char* pszFormat, ...);

#pragma GCC visibility pop
