#pragma once

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

// Events and waits. All of these may be called from any thread.

constexpr DWORD WAIT_OBJECT_0 = 0;   ///< The first event is signalled; the next one counts on from here.
constexpr DWORD WAIT_TIMEOUT = 258;  ///< The time has passed.
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;  ///< A handle is no event, or was closed meanwhile.

/// A new event, which the caller closes with CloseHandle. An event of automatic reset is cleared by the wait
/// that it ends; one of manual reset stays signalled until ResetEvent.
HANDLE CreateEventW(bool bManualReset, bool bInitialState);
bool SetEvent(HANDLE hEvent);    ///< False if the handle is no event any more.
bool ResetEvent(HANDLE hEvent);  ///< False if the handle is no event any more.

/// Closes an event or a serial line. Who is blocked on it at that moment is released: a wait with
/// WAIT_FAILED, a read with 0 bytes. False if the handle is not open, with EBADF left for GetLastError.
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
