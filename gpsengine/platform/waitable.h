#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "gpsengine/platform/types.h"

/// What a HANDLE stands for.
class KernelObject {
 public:
  virtual ~KernelObject() = default;
  /// The handle has been closed: releases who is blocked on the object.
  virtual void OnClose() = 0;
};

/// Gives an object a handle that was never given out before.
HANDLE AddHandle(std::shared_ptr<KernelObject> pObject);
/// The object, or null if the handle is not open.
std::shared_ptr<KernelObject> FindHandle(HANDLE handle);

template <class T>
std::shared_ptr<T> FindObject(HANDLE handle) {
  return std::dynamic_pointer_cast<T>(FindHandle(handle));
}

/// One blocked thread. What it waits for is looked at under g_WaitMutex, and whoever makes that come true
/// wakes it.
struct Waiter {
  std::condition_variable condition;
};

/// Guards the state of all events, and the sleep of all waiters. Waits are few and short, so one mutex serves
/// them all, and a wait for several objects needs no more.
extern std::mutex g_WaitMutex;
