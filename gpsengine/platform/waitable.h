#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "gpsengine/platform/types.h"

/// The object that a HANDLE refers to.
class KernelObject {
 public:
  virtual ~KernelObject() = default;
  /// The handle has been closed: releases blocked callers.
  virtual void OnClose() = 0;
};

/// Assigns a new handle to an object.
HANDLE AddHandle(std::shared_ptr<KernelObject> object);
/// The object, or null if the handle is not open.
std::shared_ptr<KernelObject> FindHandle(HANDLE handle);

template <class T>
std::shared_ptr<T> FindObject(HANDLE handle) {
  return std::dynamic_pointer_cast<T>(FindHandle(handle));
}

/// A blocked thread. Its condition is checked under g_WaitMutex; code that makes it true wakes the thread.
struct Waiter {
  std::condition_variable condition;
};

/// Guards the state of all events and all waiters. Waits are few and short, so one mutex is enough, and makes
/// waiting for several objects simple.
extern std::mutex g_WaitMutex;
