#include "gpsengine/receiver/messages.h"

LRESULT CGPSWindow::WindowProc(UINT message, WPARAM w_param, LPARAM l_param) {
  switch (message) {
    case WM_GPS_NEW_DATA:
      OnNewData(*TakePosted<CGPSData>(w_param));
      break;
    case WM_GPS_NEW_STRING:
      OnNewString(*TakePosted<CString>(w_param));
      break;
    case WM_GPS_NEW_RAW_DATA:
      OnNewRawData(*TakePosted<CGPSDataRaw>(w_param));
      break;
    case WM_GPS_NEW_EPHEMERIS:
      OnNewEphemeris(*TakePosted<CGPSDataEphemeris>(w_param));
      break;
    case WM_GPS_NEW_BIN:
      OnNewBin();
      break;
    default:
      return CWnd::WindowProc(message, w_param, l_param);
  }
  return 0;
}

void CGPSWindow::Drain() {
  for (MSG message; PeekMessageW(&message, PM_REMOVE);) DispatchMessageW(message);
}
