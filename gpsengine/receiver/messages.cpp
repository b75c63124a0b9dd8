#include "gpsengine/receiver/messages.h"

LRESULT CGPSWindow::WindowProc(UINT message, WPARAM w_param, LPARAM l_param) {
  switch (message) {
    case WM_GPS_NEW_DATA:
      OnNewData(*TakePosted<CGPSData>(w_param));
      return 0;
    case WM_GPS_NEW_STRING:
      OnNewString(*TakePosted<CString>(w_param));
      return 0;
    case WM_GPS_NEW_RAW_DATA:
      OnNewRawData(*TakePosted<CGPSDataRaw>(w_param));
      return 0;
    case WM_GPS_NEW_EPHEMERIS:
      OnNewEphemeris(*TakePosted<CGPSDataEphemeris>(w_param));
      return 0;
    case WM_GPS_NEW_BIN:
      OnNewBin();
      return 0;
    default:
      return CWnd::WindowProc(message, w_param, l_param);
  }
}

void CGPSWindow::Drain() {
  for (MSG message; PeekMessageW(&message, PM_REMOVE);) DispatchMessageW(message);
}
