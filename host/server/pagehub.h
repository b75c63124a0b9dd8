#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace host {

/// Where the threads that serve pages get their lines from: a bounded history of JSON lines, and the state of
/// the server. One thread puts in, any may read; nobody waits for a reader. Outlives its readers.
class PageHub {
 public:
  /// `history` is how many bytes of lines are kept, `readers` how many there may be at a time.
  explicit PageHub(std::size_t history = 1 << 20, int readers = 12)
      : history_limit_(history), reader_limit_(readers) {}

  /// Adds a line, without its line end, to the history; the oldest ones go.
  void Publish(std::string_view line);
  /// Replaces the server's state, a line likewise.
  void SetStatus(std::string line);
  std::string Status() const;
  /// The state and the lines that are kept, the oldest first, each with a line end.
  std::string History() const;
  /// Ends all readers.
  void Close();

  struct Counts {
    int readers = 0;
    long long dropped = 0;  ///< Lines that were gone before a reader came to them.
  };
  Counts GetCounts() const;

  /// One page's place in the stream. Belongs to one thread.
  class Reader {
   public:
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// Appends the next events as text/event-stream has them, waiting so long for one: at most 64 KB and one
    /// line more. False once the hub is closed.
    bool Take(std::string& events, std::chrono::milliseconds wait);

   private:
    friend class PageHub;
    Reader(PageHub& hub, long long next) : hub_(hub), next_(next) {}

    PageHub& hub_;
    long long next_;                // number of the next line
    long long status_version_ = 0;  // of the state that was last taken
  };

  /// A place after line number `after`, or before all that is kept if there is no such line; null if
  /// there are too many readers.
  std::unique_ptr<Reader> Join(long long after);

 private:
  long long End() const { return first_ + static_cast<long long>(lines_.size()); }

  const std::size_t history_limit_;
  const int reader_limit_;
  mutable std::mutex mutex_;
  std::condition_variable news_;
  std::deque<std::string> lines_;
  std::size_t bytes_ = 0;
  long long first_ = 1;  // number of the oldest line kept
  std::string status_;
  long long status_version_ = 0;
  Counts counts_;
  bool closed_ = false;
};

}  // namespace host
