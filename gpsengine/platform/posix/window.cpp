#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "gpsengine/platform/posix/messagequeue.h"
#include "gpsengine/platform/posix/waitable.h"
#include "gpsengine/platform/window.h"

namespace {

struct WindowEntry {
  HWND hWnd;
  CWnd* pWindow;
  std::shared_ptr<MessageQueue> pQueue;
};

struct WindowTable {
  std::mutex mutex;
  std::uintptr_t nNext = 1;
  std::vector<WindowEntry> windows;  // a process has a handful
  UINT nNextMessage = 0xC000;
  std::map<std::u16string, UINT> messages;
};

// Never destroyed, like the table of handles.
WindowTable& Windows() {
  static auto* const table = new WindowTable;
  return *table;
}

// The entry of a window, or null. With the table's lock held.
WindowEntry* FindEntry(WindowTable& table, HWND hWnd) {
  const auto entry = std::find_if(table.windows.begin(), table.windows.end(),
                                  [hWnd](const WindowEntry& each) { return each.hWnd == hWnd; });
  return entry == table.windows.end() ? nullptr : &*entry;
}

CWnd* FindWindow(HWND hWnd) {
  WindowTable& table = Windows();
  const std::lock_guard lock(table.mutex);
  const WindowEntry* const entry = FindEntry(table, hWnd);
  return entry == nullptr ? nullptr : entry->pWindow;
}

std::shared_ptr<MessageQueue> FindQueue(HWND hWnd) {
  WindowTable& table = Windows();
  const std::lock_guard lock(table.mutex);
  const WindowEntry* const entry = FindEntry(table, hWnd);
  return entry == nullptr ? nullptr : entry->pQueue;
}

void Dispose(const MSG& message) {
  delete message.pFreight;
  if (message.pfnDispose != nullptr) message.pfnDispose(message.wParam);
}

// Hands a message to its window, on the window's thread.
LRESULT Deliver(const MSG& message) {
  CWnd* const window = FindWindow(message.hwnd);
  if (window == nullptr) {
    Dispose(message);
    return 0;
  }
  return window->WindowProc(message.message, message.wParam, message.lParam);
}

}  // namespace

// Closes the queue when its thread ends, so that nobody waits for it.
struct QueueOfThread {
  std::shared_ptr<MessageQueue> pQueue = std::make_shared<MessageQueue>();
  ~QueueOfThread() { pQueue->Close(); }
};

const std::shared_ptr<MessageQueue>& MessageQueue::OfThisThread() {
  static thread_local QueueOfThread queue;
  return queue.pQueue;
}

MessageQueue::~MessageQueue() {
  if (m_nDescriptor >= 0) close(m_nDescriptor);
}

void MessageQueue::Close() {
  std::deque<MSG> left;
  {
    const std::lock_guard lock(m_Mutex);
    m_bClosed = true;
    left.swap(m_Posted);
    for (SentMessage* sent : std::exchange(m_Sent, {})) {
      sent->bDone = true;
      sent->done.notify_one();
    }
  }
  for (const MSG& message : left) Dispose(message);
}

bool MessageQueue::HasAny() {
  const std::lock_guard lock(m_Mutex);
  return !m_Posted.empty() || !m_Sent.empty() || m_bQuit;
}

void MessageQueue::SetWaiter(Waiter* pWaiter) {
  const std::lock_guard lock(m_Mutex);
  m_pWaiter = pWaiter;
}

// Wakes the queue's thread after something was put in, and gives the lock up.
void MessageQueue::Announce(bool wasEmpty, std::unique_lock<std::mutex>& lock) {
  // The descriptor is written only as the queue ceases to be empty: one system call for a burst, not one a
  // message.
  if (wasEmpty && m_nDescriptor >= 0) eventfd_write(m_nDescriptor, 1);
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
  const bool wasEmpty = m_Posted.empty() && m_Sent.empty();
  m_Posted.push_back(message);
  Announce(wasEmpty, lock);
  return true;
}

LRESULT MessageQueue::SendAndWait(const MSG& message) {
  SentMessage sent{message, 0, false, {}};
  std::unique_lock lock(m_Mutex);
  if (m_bClosed) return 0;
  const bool wasEmpty = m_Posted.empty() && m_Sent.empty();
  m_Sent.push_back(&sent);
  Announce(wasEmpty, lock);
  lock.lock();
  sent.done.wait(lock, [&sent] { return sent.bDone; });
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
    sent->bDone = true;
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
    eventfd_t drained = 0;
    if (m_nDescriptor >= 0 && m_Sent.empty()) eventfd_read(m_nDescriptor, &drained);
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

void MessageQueue::Forget(HWND hWnd) {
  std::deque<MSG> forgotten;
  {
    const std::lock_guard lock(m_Mutex);
    const auto kept = std::stable_partition(m_Posted.begin(), m_Posted.end(),
                                            [hWnd](const MSG& message) { return message.hwnd != hWnd; });
    forgotten.assign(kept, m_Posted.end());
    m_Posted.erase(kept, m_Posted.end());
    std::erase_if(m_Sent, [hWnd](SentMessage* sent) {
      if (sent->message.hwnd != hWnd) return false;
      sent->bDone = true;
      sent->done.notify_one();
      return true;
    });
  }
  for (const MSG& message : forgotten) Dispose(message);
}

void MessageQueue::PostQuit() {
  std::unique_lock lock(m_Mutex);
  m_bQuit = true;
  Announce(m_Posted.empty() && m_Sent.empty(), lock);
}

int MessageQueue::Descriptor() {
  const std::lock_guard lock(m_Mutex);
  if (m_nDescriptor < 0) {
    const bool waiting = !m_Posted.empty() || !m_Sent.empty() || m_bQuit;
    m_nDescriptor = eventfd(waiting ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
  }
  return m_nDescriptor;
}

CWnd::~CWnd() {
  DestroyWindow();
}

bool CWnd::Create() {
  if (m_hWnd != nullptr) return false;
  WindowTable& table = Windows();
  const std::lock_guard lock(table.mutex);
  m_hWnd = reinterpret_cast<HWND>(table.nNext++);
  table.windows.push_back({m_hWnd, this, MessageQueue::OfThisThread()});
  return true;
}

bool CWnd::DestroyWindow() {
  if (m_hWnd == nullptr) return false;
  std::shared_ptr<MessageQueue> queue;
  {
    WindowTable& table = Windows();
    const std::lock_guard lock(table.mutex);
    WindowEntry& entry = *FindEntry(table, m_hWnd);
    queue = std::move(entry.pQueue);
    entry = std::move(table.windows.back());
    table.windows.pop_back();
  }
  queue->Forget(m_hWnd);
  m_hWnd = nullptr;
  return true;
}

const AFX_MSGMAP* CWnd::GetThisMessageMap() {
  static constexpr AFX_MSGMAP_ENTRY kNone[] = {{0, nullptr}};
  static constexpr AFX_MSGMAP kMap{nullptr, kNone};
  return &kMap;
}

const AFX_MSGMAP* CWnd::GetMessageMap() const {
  return GetThisMessageMap();
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  const AFX_MSGMAP* map = GetMessageMap();
  while (map != nullptr) {
    for (const AFX_MSGMAP_ENTRY* row = map->lpEntries; row->nMessage != 0; ++row) {
      if (row->nMessage == message) return row->pfnHandle(*this, wParam, lParam);
    }
    map = map->pfnGetBaseMap == nullptr ? nullptr : map->pfnGetBaseMap();
  }
  return 0;
}

bool IsWindow(HWND hWnd) {
  return FindWindow(hWnd) != nullptr;
}

namespace {

bool Post(const MSG& posted) {
  {
    // With the table's lock held, so that the window cannot go meanwhile.
    WindowTable& table = Windows();
    const std::lock_guard lock(table.mutex);
    const WindowEntry* const entry = FindEntry(table, posted.hwnd);
    if (entry != nullptr && entry->pQueue->Post(posted)) return true;
  }
  Dispose(posted);
  return false;
}

}  // namespace

bool PostMessageW(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam, MessageDisposer pfnDispose) {
  return Post({hWnd, message, wParam, lParam, pfnDispose, nullptr});
}

bool PostMessageW(HWND hWnd, UINT message, std::unique_ptr<MessageFreight> freight) {
  return Post({hWnd, message, 0, 0, nullptr, freight.release()});
}

LRESULT SendMessageW(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
  const MSG sent{hWnd, message, wParam, lParam, nullptr, nullptr};
  const auto queue = FindQueue(hWnd);
  if (queue == nullptr) return 0;
  if (queue == MessageQueue::OfThisThread()) return Deliver(sent);
  return queue->SendAndWait(sent);
}

bool PeekMessageW(MSG* pMsg, UINT nRemove) {
  return MessageQueue::OfThisThread()->Take(*pMsg, (nRemove & PM_REMOVE) != 0);
}

LRESULT DispatchMessageW(const MSG& msg) {
  return msg.hwnd == nullptr ? 0 : Deliver(msg);
}

void PostQuitMessage() {
  MessageQueue::OfThisThread()->PostQuit();
}

UINT RegisterWindowMessageW(const WCHAR* pszName) {
  WindowTable& table = Windows();
  const std::lock_guard lock(table.mutex);
  const auto [entry, added] = table.messages.try_emplace(pszName, table.nNextMessage);
  if (added) ++table.nNextMessage;
  return entry->second;
}

int GetQueueDescriptor() {
  return MessageQueue::OfThisThread()->Descriptor();
}

unsigned long long GetLostMessages() {
  return MessageQueue::OfThisThread()->Lost();
}
