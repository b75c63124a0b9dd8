#include "gpsengine/platform/messagequeue.h"

#include <algorithm>
#include <utility>

#include "gpsengine/platform/waitable.h"

// Closes the queue when its thread ends, so that no sender waits for it.
struct QueueOfThread {
  std::shared_ptr<MessageQueue> pQueue = std::make_shared<MessageQueue>();
  ~QueueOfThread() { pQueue->Close(); }
};

const std::shared_ptr<MessageQueue>& MessageQueue::OfThisThread() {
  static thread_local QueueOfThread queue;
  return queue.pQueue;
}

void MessageQueue::Close() {
  std::deque<MSG> left;
  {
    const std::lock_guard lock(m_Mutex);
    m_bClosed = true;
    left.swap(m_Posted);
    for (SentMessage* sent : std::exchange(m_Sent, {})) {
      sent->handled = true;
      sent->done.notify_one();
    }
  }
  for (const MSG& message : left) Dispose(message);
}

bool MessageQueue::HasAny() {
  const std::lock_guard lock(m_Mutex);
  return !m_Posted.empty() || !m_Sent.empty() || m_bQuit;
}

void MessageQueue::SetWaiter(Waiter* waiter) {
  const std::lock_guard lock(m_Mutex);
  m_pWaiter = waiter;
}

// Wakes the queue's thread after a message was added. Releases the lock.
void MessageQueue::Announce(std::unique_lock<std::mutex>& lock) {
  // Only for the first in the queue: one system call per burst instead of per message.
  if (m_WakeUp && m_Posted.size() + m_Sent.size() <= 1) m_WakeUp->Set();
  const bool wake = m_pWaiter != nullptr;
  lock.unlock();
  if (!wake) return;
  const std::lock_guard waiting(g_WaitMutex);
  const std::lock_guard again(m_Mutex);
  if (m_pWaiter != nullptr) m_pWaiter->condition.notify_one();
}

bool MessageQueue::Post(const MSG& message) {
  std::unique_lock lock(m_Mutex);
  if (m_bClosed || m_Posted.size() >= kMaxPostedMessages) {
    m_nLost.fetch_add(1, std::memory_order_relaxed);
    return false;
  }
  m_Posted.push_back(message);
  Announce(lock);
  return true;
}

LRESULT MessageQueue::SendAndWait(const MSG& message) {
  SentMessage sent{message, 0, false, {}};
  std::unique_lock lock(m_Mutex);
  if (m_bClosed) return 0;
  m_Sent.push_back(&sent);
  Announce(lock);
  lock.lock();
  sent.done.wait(lock, [&sent] { return sent.handled; });
  return sent.result;
}

void MessageQueue::HandleSent() {
  std::unique_lock lock(m_Mutex);
  HandleSent(lock);
}

void MessageQueue::HandleSent(std::unique_lock<std::mutex>& lock) {
  while (!m_Sent.empty()) {
    SentMessage* const sent = m_Sent.front();
    m_Sent.pop_front();
    lock.unlock();
    const LRESULT result = Deliver(sent->message);
    lock.lock();
    sent->result = result;
    sent->handled = true;
    sent->done.notify_one();
  }
}

bool MessageQueue::Take(MSG& message, bool remove) {
  std::unique_lock lock(m_Mutex);
  HandleSent(lock);
  if (m_Posted.empty()) {
    if (m_bQuit) {
      message = MSG{nullptr, WM_QUIT, 0, 0, nullptr, nullptr};
      if (remove) m_bQuit = false;
      return true;
    }
    if (m_WakeUp && m_Sent.empty()) m_WakeUp->Clear();
    return false;
  }
  message = m_Posted.front();
  if (remove) m_Posted.pop_front();
  lock.unlock();
  const std::unique_ptr<MessageFreight> freight(remove ? message.pFreight : nullptr);
  message.pFreight = nullptr;
  if (freight != nullptr) freight->Arrive();
  return true;
}

void MessageQueue::Forget(HWND wnd) {
  std::deque<MSG> forgotten;
  {
    const std::lock_guard lock(m_Mutex);
    const auto kept = std::stable_partition(m_Posted.begin(), m_Posted.end(),
                                            [wnd](const MSG& message) { return message.hwnd != wnd; });
    forgotten.assign(kept, m_Posted.end());
    m_Posted.erase(kept, m_Posted.end());
    std::erase_if(m_Sent, [wnd](SentMessage* sent) {
      if (sent->message.hwnd != wnd) return false;
      sent->handled = true;
      sent->done.notify_one();
      return true;
    });
  }
  for (const MSG& message : forgotten) Dispose(message);
}

void MessageQueue::PostQuit() {
  std::unique_lock lock(m_Mutex);
  m_bQuit = true;
  Announce(lock);
}

int MessageQueue::Descriptor() {
  const std::lock_guard lock(m_Mutex);
  if (!m_WakeUp) {
    m_WakeUp.emplace();
    if (!m_Posted.empty() || !m_Sent.empty() || m_bQuit) m_WakeUp->Set();
  }
  return m_WakeUp->Descriptor();
}
