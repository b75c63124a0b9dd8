#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

#include "gpsengine/platform/system.h"
#include "gpsengine/platform/window.h"

struct Waiter;

/// A message that its sender waits for, on the sender's stack.
struct SentMessage {
  MSG message;
  LRESULT result = 0;
  bool handled = false;
  std::condition_variable done;  // used with the mutex of the receiving queue
};

/// Hands a message to its window, on the window's thread; disposes of it if the window no longer exists.
LRESULT Deliver(const MSG& message);
/// Frees the payload of a message that will not be delivered.
void Dispose(const MSG& message);

/// The messages of one thread: posted messages in order; sent messages are handled first.
class MessageQueue {
 public:
  /// The calling thread's queue, created on first use.
  static const std::shared_ptr<MessageQueue>& OfThisThread();

  /// False if the queue is full or its thread has ended; the caller then disposes of the message.
  bool Post(const MSG& message);
  LRESULT SendAndWait(const MSG& message);

  // For the queue's own thread.
  bool Take(MSG& message, bool remove);
  /// Handles messages sent by other threads.
  void HandleSent();
  /// Discards the messages of a window being destroyed.
  void Forget(HWND window);
  void PostQuit();
  int Descriptor();
  unsigned long long Lost() const { return m_nLost.load(std::memory_order_relaxed); }

  /// Sets the waiter to wake on a new message; null for none.
  void SetWaiter(Waiter* waiter);
  bool HasAny();

 private:
  void HandleSent(std::unique_lock<std::mutex>& lock);
  void Announce(std::unique_lock<std::mutex>& lock);
  void Close();

  std::mutex m_Mutex;
  std::deque<MSG> m_Posted;
  std::deque<SentMessage*> m_Sent;
  Waiter* m_pWaiter = nullptr;
  std::optional<WakeUp> m_WakeUp;  // created when the descriptor is first requested
  bool m_bQuit = false;
  bool m_bClosed = false;
  std::atomic<unsigned long long> m_nLost{0};

  friend struct QueueOfThread;
};
