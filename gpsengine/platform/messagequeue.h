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
  bool bDone = false;
  std::condition_variable done;  // with the mutex of the queue that it stands in
};

/// Hands a message to its window, on the window's thread; disposes of it if the window is gone.
LRESULT Deliver(const MSG& message);
/// Frees what a message carries that nobody will take.
void Dispose(const MSG& message);

/// The messages of one thread: posted ones in their order, and sent ones, which come first.
class MessageQueue {
 public:
  /// The calling thread's queue, made at the first call.
  static const std::shared_ptr<MessageQueue>& OfThisThread();

  /// False if the queue is full or its thread has ended; the message is then the caller's to dispose of.
  bool Post(const MSG& message);
  LRESULT SendAndWait(const MSG& message);

  // For the queue's own thread.
  bool Take(MSG& message, bool remove);
  /// Handles what other threads have sent.
  void HandleSent();
  /// Takes out what is meant for a window that goes away.
  void Forget(HWND hWnd);
  void PostQuit();
  int Descriptor();
  unsigned long long Lost() const { return m_nLost.load(std::memory_order_relaxed); }

  /// Who is to be woken when something comes; null for nobody. For waits.
  void SetWaiter(Waiter* pWaiter);
  bool HasAny();

 private:
  void HandleSent(std::unique_lock<std::mutex>& lock);
  void Announce(bool wasEmpty, std::unique_lock<std::mutex>& lock);
  void Close();

  std::mutex m_Mutex;
  std::deque<MSG> m_Posted;
  std::deque<SentMessage*> m_Sent;
  Waiter* m_pWaiter = nullptr;
  std::optional<WakeUp> m_WakeUp;  // once somebody has asked for the descriptor
  bool m_bQuit = false;
  bool m_bClosed = false;
  std::atomic<unsigned long long> m_nLost{0};

  friend struct QueueOfThread;
};
