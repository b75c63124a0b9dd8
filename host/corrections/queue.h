#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace host {

/// What is on its way from a source to the receiver, whole pieces of a stream. What finds no room makes it:
/// the oldest are dropped, since old corrections are worth the least.
class CorrectionQueue {
 public:
  explicit CorrectionQueue(std::size_t most_bytes) : most_(most_bytes) {}

  /// Adds a piece. One that waits for room waits until there is some, or the end. Gives how many were
  /// dropped.
  int Add(std::string piece, bool waits);
  /// Waits for a piece that may go; none at the end.
  std::optional<std::string> Take();
  /// Waits a moment in the middle of a piece. False if its rest is not to go any more.
  bool Rest(std::chrono::milliseconds time);
  /// Whether there is a line that takes them.
  void SetOpen(bool open);
  void Stop();

 private:
  const std::size_t most_;
  std::mutex mutex_;
  std::condition_variable news_;
  std::deque<std::string> pieces_;
  std::size_t bytes_ = 0;
  bool open_ = false, stopped_ = false;
};

}  // namespace host
