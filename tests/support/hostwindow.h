#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "gpsengine/platform/application.h"
#include "gpsengine/receiver/messages.h"

/// A host's main window that keeps what the library posts.
class HostWindow : public CWnd {
 public:
  HostWindow() { Create(); }

  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
    EXPECT_EQ(lParam, 0);
    if (message == WM_GPS_NEW_DATA) Take(wParam, records);
    if (message == WM_GPS_NEW_STRING) Take(wParam, strings);
    if (message == WM_GPS_NEW_RAW_DATA) Take(wParam, epochs);
    if (message == WM_GPS_NEW_EPHEMERIS) Take(wParam, ephemerides);
    if (message == WM_GPS_NEW_BIN) ++blocks;
    order.push_back(message);
    return 0;
  }

  /// Handles what is in the queue.
  void Drain() {
    for (MSG message; PeekMessageW(&message, PM_REMOVE);) DispatchMessageW(message);
  }

  std::vector<CGPSData> records;
  std::vector<CString> strings;
  std::vector<CGPSDataRaw> epochs;
  std::vector<CGPSDataEphemeris> ephemerides;
  int blocks = 0;
  std::vector<UINT> order;  ///< The messages, as they came.

 private:
  template <class T>
  static void Take(WPARAM wParam, std::vector<T>& into) {
    const auto object = TakePosted<T>(wParam);
    into.push_back(*object);
  }
};
