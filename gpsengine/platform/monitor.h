#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

/// A lock, and waits for what others change under it.
class Monitor {
 public:
  using Lock = std::unique_lock<std::mutex>;

  [[nodiscard]] Lock Enter() { return Lock(m_Mutex); }
  /// Something has changed, for who waits.
  void Announce() { m_Changed.notify_all(); }
  /// Waits, with the lock given up meanwhile, until `ready` holds, the token is stopped or the time is up;
  /// without a time, there is no limit. What `ready` says then.
  template <class Ready>
  bool Wait(Lock& lock, const std::stop_token& stop, std::optional<std::chrono::milliseconds> longest,
            Ready ready) {
    return longest ? m_Changed.wait_for(lock, stop, *longest, std::move(ready))
                   : m_Changed.wait(lock, stop, std::move(ready));
  }

 private:
  std::mutex m_Mutex;
  std::condition_variable_any m_Changed;
};
