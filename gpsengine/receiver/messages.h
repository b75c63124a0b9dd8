#pragma once

#include <memory>

#include "gpsengine/platform/cstring.h"
#include "gpsengine/platform/window.h"
#include "gpsengine/records/gpsdata.h"
#include "gpsengine/records/gpsdataraw.h"

#pragma GCC visibility push(default)

// What reaches the host: window messages, posted to the application's main window from the reader thread, and
// callbacks. The object that a message carries belongs to the host from the moment it is posted. CGPSWindow
// deletes it after its function has returned, TakePosted lets the host keep it.

constexpr UINT WM_GPS_NEW_DATA = WM_APP + 10;       ///< wParam: a new CGPSData.
constexpr UINT WM_GPS_NEW_STRING = WM_APP + 11;     ///< wParam: a new CString, the text of one message.
constexpr UINT WM_GPS_NEW_RAW_DATA = WM_APP + 12;   ///< wParam: a new CGPSDataRaw.
constexpr UINT WM_GPS_NEW_EPHEMERIS = WM_APP + 13;  ///< wParam: a new CGPSDataEphemeris.
constexpr UINT WM_GPS_NEW_BIN = WM_APP + 14;        ///< wParam 0: CGPSReceiver::m_BinWords has the block.

/// The object that the message with this wParam carries, of the type that stands beside the message. Once a
/// message.
template <class T>
std::unique_ptr<T> TakePosted(WPARAM wParam) {
  return std::unique_ptr<T>(reinterpret_cast<T*>(wParam));
}

/// A main window for a host of the framework: calls a function for each kind of message, on the window's
/// thread. What the functions take is deleted when they return; a kind that the host does not override is
/// passed over.
class CGPSWindow : public CWnd {
 public:
  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
  /// Handles all that waits in the queue of the calling thread, which is the window's.
  void Drain();

 protected:
  /// What has come: a record, the text of a message, raw measurements, an ephemeris, or a block, which stands
  /// in CGPSReceiver::m_BinWords.
  ///@{
  virtual void OnNewData(const CGPSData& /*data*/) {}
  virtual void OnNewString(const CString& /*text*/) {}
  virtual void OnNewRawData(const CGPSDataRaw& /*epoch*/) {}
  virtual void OnNewEphemeris(const CGPSDataEphemeris& /*ephemeris*/) {}
  virtual void OnNewBin() {}
  ///@}
};

/// What a callback can be asked for.
enum GPSNotificationType : int {
  GPS_NOTIFY_EPHEMERIS = 3,  ///< An ephemeris has been decoded.
};

/// The payload of a notification, which remains the library's.
struct CGPSNotification {
  /// As the constructor leaves it: data go by the messages.
  ///@{
  CGPSData m_LastPosition;
  CGPSData m_LastProprietary;
  CGPSDataRaw m_LastRaw;
  CGPSDataEphemeris m_LastEphemeris;
  ///@}
};

/// Runs on the reader thread, which decodes nothing meanwhile. It must not block for long.
using GPSNotificationCallback = void (*)(GPSNotificationType type, CGPSNotification* pData, void* pUser);

/// A registered callback.
struct GPSNotificationEntry {
  GPSNotificationType type;     ///< What it is called for.
  GPSNotificationCallback pfn;  ///< Null: none.
  void* pUser;                  ///< Handed to the callback as it is.
};

#pragma GCC visibility pop
