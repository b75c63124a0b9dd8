#include "gpsengine/platform/waitable.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <unordered_map>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/file.h"
#include "gpsengine/platform/messagequeue.h"

std::mutex g_WaitMutex;

namespace {

struct HandleTable {
  std::mutex mutex;
  std::uintptr_t nNext = 1;
  std::unordered_map<HANDLE, std::shared_ptr<KernelObject>> objects;
};

// Never destroyed: a thread may close handles during static destruction.
HandleTable& Handles() {
  static auto* const table = new HandleTable;
  return *table;
}

class Event : public KernelObject {
 public:
  Event(bool manual, bool signalled) : m_bManual(manual), m_bSignalled(signalled) {}

  void Set() {
    const std::lock_guard lock(g_WaitMutex);
    m_bSignalled = true;
    Wake();
  }
  void Reset() {
    const std::lock_guard lock(g_WaitMutex);
    m_bSignalled = false;
  }
  void OnClose() override {
    const std::lock_guard lock(g_WaitMutex);
    m_bClosed = true;
    Wake();
  }

  // The rest is for waits, under g_WaitMutex.
  bool IsSignalled() const { return m_bSignalled; }
  bool IsClosed() const { return m_bClosed; }
  void Consume() {
    if (!m_bManual) m_bSignalled = false;
  }
  void Add(Waiter* waiter) { m_Waiters.push_back(waiter); }
  void Remove(Waiter* waiter) { m_Waiters.erase(std::find(m_Waiters.begin(), m_Waiters.end(), waiter)); }

 private:
  void Wake() {
    for (Waiter* waiter : m_Waiters) waiter->condition.notify_one();
  }

  const bool m_bManual;
  bool m_bSignalled;
  bool m_bClosed = false;
  std::vector<Waiter*> m_Waiters;
};

// A wait of one thread for any of several events and, with a queue, for a message.
class WaitOperation {
 public:
  WaitOperation(std::vector<std::shared_ptr<Event>> events, std::shared_ptr<MessageQueue> queue)
      : m_Events(std::move(events)), m_pQueue(std::move(queue)) {
    if (m_pQueue) m_pQueue->SetWaiter(&m_Waiter);
    const std::lock_guard lock(g_WaitMutex);
    for (const auto& event : m_Events) event->Add(&m_Waiter);
  }
  ~WaitOperation() {
    if (m_pQueue) m_pQueue->SetWaiter(nullptr);
    const std::lock_guard lock(g_WaitMutex);
    for (const auto& event : m_Events) event->Remove(&m_Waiter);
  }
  WaitOperation(const WaitOperation&) = delete;
  WaitOperation& operator=(const WaitOperation&) = delete;

  bool Block(DWORD ms) {
    std::unique_lock lock(g_WaitMutex);
    const auto ready = [this] { return Look(); };
    if (ms == INFINITE) {
      m_Waiter.condition.wait(lock, ready);
      return true;
    }
    return m_Waiter.condition.wait_for(lock, std::chrono::milliseconds(ms), ready);
  }
  DWORD Result() const { return m_nResult; }

 private:
  // Whether the wait is over; consumes the signal that ended it.
  bool Look() {
    for (std::size_t i = 0; i < m_Events.size(); ++i) {
      if (m_Events[i]->IsClosed()) {
        m_nResult = WAIT_FAILED;
        return true;
      }
      if (m_Events[i]->IsSignalled()) {
        m_Events[i]->Consume();
        m_nResult = WAIT_OBJECT_0 + static_cast<DWORD>(i);
        return true;
      }
    }
    if (m_pQueue && m_pQueue->HasAny()) {
      m_nResult = WAIT_OBJECT_0 + static_cast<DWORD>(m_Events.size());
      return true;
    }
    return false;
  }

  std::vector<std::shared_ptr<Event>> m_Events;
  std::shared_ptr<MessageQueue> m_pQueue;
  Waiter m_Waiter;
  DWORD m_nResult = WAIT_TIMEOUT;
};

DWORD WaitFor(DWORD count, const HANDLE* handles, DWORD ms, bool messages) {
  std::vector<std::shared_ptr<Event>> events;
  for (DWORD i = 0; i < count; ++i) {
    events.push_back(FindObject<Event>(handles[i]));
    if (!events.back()) return WAIT_FAILED;
  }
  auto queue = messages ? MessageQueue::OfThisThread() : nullptr;
  if (queue) queue->HandleSent();
  WaitOperation operation(std::move(events), queue);
  CurrentClock().Wait(messages ? WaitKind::message : WaitKind::event, ms,
                      [&operation](DWORD limit) { return operation.Block(limit); });
  if (queue) queue->HandleSent();
  return operation.Result();
}

}  // namespace

HANDLE AddHandle(std::shared_ptr<KernelObject> object) {
  HandleTable& table = Handles();
  const std::lock_guard lock(table.mutex);
  const auto handle = reinterpret_cast<HANDLE>(table.nNext++);
  table.objects.emplace(handle, std::move(object));
  return handle;
}

std::shared_ptr<KernelObject> FindHandle(HANDLE handle) {
  HandleTable& table = Handles();
  const std::lock_guard lock(table.mutex);
  const auto entry = table.objects.find(handle);
  return entry == table.objects.end() ? nullptr : entry->second;
}

bool CloseHandle(HANDLE handle) {
  HandleTable& table = Handles();
  std::shared_ptr<KernelObject> object;
  {
    const std::lock_guard lock(table.mutex);
    const auto entry = table.objects.find(handle);
    if (entry == table.objects.end()) {
      SetLastError(EBADF);
      return false;
    }
    object = std::move(entry->second);
    table.objects.erase(entry);
  }
  object->OnClose();
  return true;
}

HANDLE CreateEventW(bool manual_reset, bool initial_state) {
  return AddHandle(std::make_shared<Event>(manual_reset, initial_state));
}

bool SetEvent(HANDLE handle) {
  const auto event = FindObject<Event>(handle);
  if (event) event->Set();
  return event != nullptr;
}

bool ResetEvent(HANDLE handle) {
  const auto event = FindObject<Event>(handle);
  if (event) event->Reset();
  return event != nullptr;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD ms) {
  return WaitFor(1, &handle, ms, false);
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, DWORD ms) {
  return WaitFor(count, handles, ms, false);
}

DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, DWORD ms) {
  return WaitFor(count, handles, ms, true);
}
