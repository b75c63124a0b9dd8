#pragma once

#include "gpsengine/platform/cstring.h"
#include "gpsengine/platform/shared.h"

#pragma GCC visibility push(default)

/// Collects the text of the messages for a host that wants to see them. The host clears m_bPaused to start.
/// It may read m_strData while the engine is stopped or once m_bOverflow is set: after pausing, the reader
/// thread may still be adding a message.
class CComBuffer {
 public:
  CString m_strData;                  ///< All captured messages, concatenated.
  CString m_strOther;                 ///< For the host's use.
  CShared<bool> m_bPaused = true;     ///< Nothing is captured, and no WM_GPS_NEW_STRING is posted.
  CShared<bool> m_bOverflow = false;  ///< Capture stopped because m_strData grew too long.

  /// For a host that wants every text by its message, or no longer: sets m_bPaused. From then on m_strData
  /// stays as it is, so that the capture never stops by itself.
  void KeepCapturing(bool bWanted);
  /// Adds a message, on the reader thread. Stops the capture when m_strData already exceeds 100,000
  /// characters.
  void OnRawData(CString* pText);

 private:
  CShared<bool> m_bCollects = true;
};

#pragma GCC visibility pop
