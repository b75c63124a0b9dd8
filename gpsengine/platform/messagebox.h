#pragma once

#include <functional>

#include "gpsengine/platform/cstring.h"

#pragma GCC visibility push(default)

/// What a message box is for.
enum class BoxKind {
  notice,  ///< Something to know.
  pause,   ///< Holds the caller up until the user goes on.
};

/// Shows a text to the user and returns when it has been seen. Without a handler the text goes to standard
/// error, and a pause waits for Enter if standard input is a terminal.
void AfxMessageBox(const CString& text, BoxKind kind = BoxKind::notice);

/// A host's way to show a box; it returns when the user has seen it.
using MessageBoxHandler = std::function<void(const CString& text, BoxKind kind)>;
/// Puts the host's own boxes in place; an empty handler restores the default. The handler runs on the thread
/// that shows the box, which may be the reader thread.
void SetMessageBoxHandler(MessageBoxHandler handler);

#pragma GCC visibility pop
