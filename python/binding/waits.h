#pragma once

#include <pybind11/pybind11.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stop_token>
#include <string>

#include "gpsengine/face/error.h"

namespace binding {

namespace py = pybind11;

/// The longest wait after which the interpreter is asked whether the user has interrupted it.
constexpr std::chrono::milliseconds kSlice(100);

/// Runs what the user's signals ask for, and throws what comes of it: KeyboardInterrupt.
inline void CheckSignals() {
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

/// Makes a call without the interpreter's lock.
template <class Call>
auto WithoutLock(Call call) {
  const py::gil_scoped_release free;
  return call();
}

/// Makes a call that may take long, on a thread beside and without the interpreter's lock. An interrupt stops
/// its token, waits for its end and is thrown.
template <class Call>
auto Interruptibly(Call call) {
  std::stop_source stop;
  auto result = std::async(std::launch::async, call, stop.get_token());
  const auto is_done = [&](auto time) {
    const py::gil_scoped_release free;
    return result.wait_for(time) == std::future_status::ready;
  };
  while (!is_done(kSlice)) {
    try {
      CheckSignals();
    } catch (py::error_already_set&) {
      stop.request_stop();
      while (!is_done(std::chrono::hours(1))) continue;
      throw;
    }
  }
  return result.get();
}

/// Knows in which process something was made: its threads are not there in a fork.
class Process {
 public:
  bool IsThis() const { return made_in_ == getpid(); }
  /// Throws an Error in another process.
  void Check() const {
    if (!IsThis()) Refuse("this was opened in another process");
  }

 protected:
  [[noreturn]] static void Refuse(const char* why) {
    throw gps::Error(gps::ErrorCode::busy,
                     std::string(why) +
                         ", of which this one is a fork: open it after the fork, or begin the process afresh "
                         "(multiprocessing.set_start_method(\"spawn\"))");
  }

 private:
  const pid_t made_in_ = getpid();
};

/// Goes with a use of the engine. A fork of a process that has one can have none of its own.
class Use : public Process {
 public:
  Use() {
    if (uses_ > 0 && owner_ != getpid()) Refuse("a receiver or recording is in use in another process");
    owner_ = getpid();
    ++uses_;
  }
  ~Use() { --uses_; }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;

 private:
  static inline std::atomic<int> uses_ = 0;
  static inline std::atomic<pid_t> owner_ = 0;
};

}  // namespace binding
