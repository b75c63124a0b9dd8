#include "gpsengine/receiver/messages.h"

LRESULT CGPSWindow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_GPS_NEW_DATA:
      OnNewData(*TakePosted<CGPSData>(wParam));
      return 0;
    case WM_GPS_NEW_STRING:
      OnNewString(*TakePosted<CString>(wParam));
      return 0;
    case WM_GPS_NEW_RAW_DATA:
      OnNewRawData(*TakePosted<CGPSDataRaw>(wParam));
      return 0;
    case WM_GPS_NEW_EPHEMERIS:
      OnNewEphemeris(*TakePosted<CGPSDataEphemeris>(wParam));
      return 0;
    case WM_GPS_NEW_BIN:
      OnNewBin();
      return 0;
    default:
      return CWnd::WindowProc(message, wParam, lParam);
  }
}

void CGPSWindow::Drain() {
  for (MSG message; PeekMessageW(&message, PM_REMOVE);) DispatchMessageW(message);
}
