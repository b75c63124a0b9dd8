#pragma once

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

// Events and waits. All of these may be called from any thread.

constexpr DWORD WAIT_OBJECT_0 = 0;         ///< The first event is signalled; add the index for later ones.
constexpr DWORD WAIT_TIMEOUT = 258;        ///< The timeout elapsed.
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;  ///< A handle is not an event, or was closed during the wait.

/// Creates an event, which the caller closes with CloseHandle. An auto-reset event is cleared by the wait
/// that it ends; a manual-reset event stays signalled until ResetEvent.
HANDLE CreateEventW(bool bManualReset, bool bInitialState);
bool SetEvent(HANDLE hEvent);    ///< False if the handle is not an open event.
bool ResetEvent(HANDLE hEvent);  ///< False if the handle is not an open event.

/// Closes an event or a serial port. Blocked callers are released: a wait with WAIT_FAILED, a read with 0
/// bytes. False if the handle is not open, and GetLastError is EBADF.
bool CloseHandle(HANDLE handle);

/// WAIT_OBJECT_0 when the event is signalled, WAIT_TIMEOUT after `ms`, WAIT_FAILED if the handle is or gets
/// closed.
DWORD WaitForSingleObject(HANDLE hEvent, DWORD ms);
/// Waits for any one of the events; the result is WAIT_OBJECT_0 plus the index of the first that is
/// signalled.
DWORD WaitForMultipleObjects(DWORD nCount, const HANDLE* pHandles, DWORD ms);
/// The same, but a message in the calling thread's queue ends the wait too: WAIT_OBJECT_0 plus `nCount`.
/// Messages that other threads send are handled inside the wait and end it as well.
DWORD MsgWaitForMultipleObjects(DWORD nCount, const HANDLE* pHandles, DWORD ms);

#pragma GCC visibility pop
