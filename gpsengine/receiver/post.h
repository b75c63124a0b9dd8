#pragma once

#include <memory>

#include "gpsengine/platform/application.h"
#include "gpsengine/receiver/messages.h"

/// Posts an object to the application's main window, which owns it from then on. An object that nobody takes,
/// because there is no window or its queue is full, is freed.
template <class T>
void PostObject(UINT message, std::unique_ptr<T> object) {
  PostMessageW(AfxGetMainWnd(), message, reinterpret_cast<WPARAM>(object.release()), 0,
               [](WPARAM w_param) { TakePosted<T>(w_param); });
}
