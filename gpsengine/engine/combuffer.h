#pragma once

#include "gpsengine/platform/cstring.h"
#include "gpsengine/platform/shared.h"

#pragma GCC visibility push(default)

/// Collects the text of the messages for a host that wants to see them. The host clears m_bPaused to start.
/// It reads m_strData while no run is under way, or once m_bOverflow is set: the reader thread may still be
/// at a message when the host has paused the capture.
class CComBuffer {
 public:
  CString m_strData;                  ///< All messages captured, joined.
  CString m_strOther;                 ///< The host's own.
  CShared<bool> m_bPaused = true;     ///< Nothing is captured, and no WM_GPS_NEW_STRING is posted.
  CShared<bool> m_bOverflow = false;  ///< The capture has stopped itself, since m_strData grew too long.

  /// Adds a message, on the reader thread. Behind 100,000 characters it is the last one.
  void OnRawData(CString* pText);
};

#pragma GCC visibility pop
