#pragma once

#include <functional>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

/// What a message box is for.
enum class BoxKind {
  notice,  ///< For information.
  pause,   ///< Blocks the caller until the user continues.
};

/// Shows a message and returns when the user has dismissed it. Without a handler it is printed to standard
/// error, and a pause waits for Enter if standard input is a terminal.
void AfxMessageBox(const CString& text, BoxKind kind = BoxKind::notice);

/// Shows a box for a host; returns when the user has dismissed it.
using MessageBoxHandler = std::function<void(const CString& text, BoxKind kind)>;
/// Installs the host's own handler; an empty one restores the default. The handler runs on the thread that
/// shows the box, which may be the reader thread.
void SetMessageBoxHandler(MessageBoxHandler handler);

#pragma GCC visibility pop
