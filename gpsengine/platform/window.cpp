#include "gpsengine/platform/window.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "gpsengine/platform/messagequeue.h"

namespace {

struct WindowEntry {
  HWND hWnd;
  CWnd* pWindow;
  std::shared_ptr<MessageQueue> pQueue;
};

struct WindowTable {
  std::mutex mutex;
  std::uintptr_t nNext = 1;
  std::vector<WindowEntry> windows;  // there are few
  UINT nNextMessage = 0xC000;
  std::map<std::u16string, UINT> messages;
};

// Never destroyed, like the table of handles.
WindowTable& Windows() {
  static auto* const table = new WindowTable;
  return *table;
}

// The entry of a window, or null. Call with the table locked.
WindowEntry* FindEntry(WindowTable& table, HWND wnd) {
  for (WindowEntry& entry : table.windows) {
    if (entry.hWnd == wnd) return &entry;
  }
  return nullptr;
}

thread_local CWnd* t_pAtOnce = nullptr;  // of the innermost CPostAtOnce

CWnd* FindWindow(HWND wnd) {
  WindowTable& table = Windows();
  const std::lock_guard lock(table.mutex);
  const WindowEntry* const entry = FindEntry(table, wnd);
  return entry == nullptr ? nullptr : entry->pWindow;
}

std::shared_ptr<MessageQueue> FindQueue(HWND wnd) {
  WindowTable& table = Windows();
  const std::lock_guard lock(table.mutex);
  const WindowEntry* const entry = FindEntry(table, wnd);
  return entry == nullptr ? nullptr : entry->pQueue;
}

}  // namespace

void Dispose(const MSG& message) {
  delete message.pFreight;
  if (message.pfnDispose != nullptr) message.pfnDispose(message.wParam);
}

LRESULT Deliver(const MSG& message) {
  CWnd* const window = FindWindow(message.hwnd);
  if (window == nullptr) {
    Dispose(message);
    return 0;
  }
  return window->WindowProc(message.message, message.wParam, message.lParam);
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
  if (t_pAtOnce == this) t_pAtOnce = nullptr;
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

LRESULT CWnd::WindowProc(UINT message, WPARAM w_param, LPARAM l_param) {
  const AFX_MSGMAP* map = GetMessageMap();
  while (map != nullptr) {
    for (const AFX_MSGMAP_ENTRY* row = map->lpEntries; row->nMessage != 0; ++row) {
      if (row->nMessage == message) return row->pfnHandle(*this, w_param, l_param);
    }
    map = map->pfnGetBaseMap == nullptr ? nullptr : map->pfnGetBaseMap();
  }
  return 0;
}

bool IsWindow(HWND wnd) {
  return FindWindow(wnd) != nullptr;
}

static bool Post(const MSG& posted) {
  if (t_pAtOnce != nullptr && t_pAtOnce->GetSafeHwnd() == posted.hwnd) {
    const std::unique_ptr<MessageFreight> freight(posted.pFreight);
    if (freight != nullptr) freight->Arrive();
    t_pAtOnce->WindowProc(posted.message, posted.wParam, posted.lParam);
    return true;
  }
  {
    // With the table locked, so that the window cannot be destroyed meanwhile.
    WindowTable& table = Windows();
    const std::lock_guard lock(table.mutex);
    const WindowEntry* const entry = FindEntry(table, posted.hwnd);
    if (entry != nullptr && entry->pQueue->Post(posted)) return true;
  }
  Dispose(posted);
  return false;
}

CPostAtOnce::CPostAtOnce(CWnd& window) : m_pOuter(std::exchange(t_pAtOnce, &window)) {}

CPostAtOnce::~CPostAtOnce() {
  t_pAtOnce = m_pOuter;
}

bool PostMessageW(HWND wnd, UINT message, WPARAM w_param, LPARAM l_param, MessageDisposer dispose) {
  return Post({wnd, message, w_param, l_param, dispose, nullptr});
}

bool PostMessageW(HWND wnd, UINT message, std::unique_ptr<MessageFreight> freight) {
  return Post({wnd, message, 0, 0, nullptr, freight.release()});
}

LRESULT SendMessageW(HWND wnd, UINT message, WPARAM w_param, LPARAM l_param) {
  const MSG sent{wnd, message, w_param, l_param, nullptr, nullptr};
  const auto queue = FindQueue(wnd);
  if (queue == nullptr) return 0;
  if (queue == MessageQueue::OfThisThread()) return Deliver(sent);
  return queue->SendAndWait(sent);
}

bool PeekMessageW(MSG* msg, UINT remove) {
  return MessageQueue::OfThisThread()->Take(*msg, (remove & PM_REMOVE) != 0);
}

LRESULT DispatchMessageW(const MSG& msg) {
  return msg.hwnd == nullptr ? 0 : Deliver(msg);
}

void PostQuitMessage() {
  MessageQueue::OfThisThread()->PostQuit();
}

UINT RegisterWindowMessageW(const WCHAR* name) {
  WindowTable& table = Windows();
  const std::lock_guard lock(table.mutex);
  const auto [entry, added] = table.messages.try_emplace(name, table.nNextMessage);
  if (added) ++table.nNextMessage;
  return entry->second;
}

int GetQueueDescriptor() {
  return MessageQueue::OfThisThread()->Descriptor();
}

unsigned long long GetLostMessages() {
  return MessageQueue::OfThisThread()->Lost();
}
