#pragma once

#include <memory>

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

// Windows and messages. A window belongs to the thread that created it; that thread takes messages from its
// queue with PeekMessageW or CWinApp::PumpMessage and delivers them with DispatchMessageW.

constexpr UINT WM_QUIT = 0x0012;  ///< Ends a message loop; see PostQuitMessage.
constexpr UINT WM_APP = 0x8000;   ///< First message number for applications.
constexpr UINT PM_NOREMOVE = 0;   ///< PeekMessageW leaves the message in the queue.
constexpr UINT PM_REMOVE = 1;     ///< PeekMessageW takes the message out.

/// Frees the payload of a message that is not delivered.
using MessageDisposer = void (*)(WPARAM wParam);

/// An object that travels with a message.
class MessageFreight {
 public:
  virtual ~MessageFreight() = default;
  /// Runs on the window's thread when the message is taken from the queue; never, if it is not.
  virtual void Arrive() = 0;
};

/// A message in a queue.
struct MSG {
  HWND hwnd = nullptr;                   ///< The receiving window.
  UINT message = 0;                      ///< The message number.
  WPARAM wParam = 0;                     ///< First parameter.
  LPARAM lParam = 0;                     ///< Second parameter.
  MessageDisposer pfnDispose = nullptr;  ///< Frees wParam; null if there is nothing to free.
  MessageFreight* pFreight = nullptr;    ///< Owned by the queue; null once the message has been taken.
};

class CWnd;

/// A row of a message map: a message and its handler.
struct AFX_MSGMAP_ENTRY {
  UINT nMessage;  ///< The message, exactly; 0 ends the rows.
  LRESULT (*pfnHandle)(CWnd& window, WPARAM wParam, LPARAM lParam);  ///< Handles it, on the window's thread.
};
/// The rows of a class, and the map of its base class, which is searched next.
struct AFX_MSGMAP {
  const AFX_MSGMAP* (*pfnGetBaseMap)();  ///< Null for the root.
  const AFX_MSGMAP_ENTRY* lpEntries;     ///< The rows of this class.
};

/// An invisible window: a target for messages, with a procedure that handles them.
class CWnd {
 public:
  CWnd() = default;
  virtual ~CWnd();  ///< Destroys the window. Runs on the window's thread.
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  /// Creates the window on the calling thread. False if it exists already.
  bool Create();
  /// Disposes of pending posted messages and releases waiting senders with 0.
  bool DestroyWindow();
  /// The window's handle; null before Create and after DestroyWindow.
  HWND GetSafeHwnd() const { return m_hWnd; }

  /// Handles one message, on the window's thread. The default uses the message map and returns 0 for a
  /// message without a row.
  virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);

 protected:
  /// The map of the object's class, and that of this class, which is empty.
  ///@{
  virtual const AFX_MSGMAP* GetMessageMap() const;
  static const AFX_MSGMAP* GetThisMessageMap();
  ///@}

 private:
  HWND m_hWnd = nullptr;
};

/// Whether this window exists now; from any thread.
bool IsWindow(HWND hWnd);

/// Maximum number of messages in a queue. A thread that does not drain its queue loses the newest ones, which
/// bounds memory.
constexpr int kMaxPostedMessages = 10000;

/// Queues a message for the window's thread and returns at once. From any thread. If there is no such window,
/// if its queue is full, or if the window is destroyed before the message is handled, `pfnDispose` is called
/// with wParam. False in the first two cases.
bool PostMessageW(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam,
                  MessageDisposer pfnDispose = nullptr);
/// The same with both parameters 0 and a freight, which is deleted with the message.
bool PostMessageW(HWND hWnd, UINT message, std::unique_ptr<MessageFreight> freight);
/// While it lives, what its thread posts to that window of its own is handled before PostMessageW returns,
/// ahead of what is in the queue. For a host that feeds the engine by itself, so that nothing piles up: its
/// handlers run in the midst of a message's decoding, and may not call the engine.
class CPostAtOnce {
 public:
  /// The window outlives it.
  explicit CPostAtOnce(CWnd& window);
  ~CPostAtOnce();
  CPostAtOnce(const CPostAtOnce&) = delete;
  CPostAtOnce& operator=(const CPostAtOnce&) = delete;

 private:
  CWnd* const m_pOuter;  // of the scope around it
};
/// Blocks until the window's procedure has handled the message, and returns its result; 0 if the window does
/// not exist or is destroyed meanwhile. From any thread. A window's thread handles sent messages while it
/// takes or waits for messages.
LRESULT SendMessageW(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);
/// Handles messages sent by other threads, then returns the next posted message of the calling thread, if
/// any.
bool PeekMessageW(MSG* pMsg, UINT nRemove);
/// Delivers a message taken from the queue to its window, which then owns the payload.
LRESULT DispatchMessageW(const MSG& msg);
/// Ends the message loop of the calling thread: PumpMessage returns false.
void PostQuitMessage();
/// A unique message number for this text, from 0xC000 up; the same throughout the process.
UINT RegisterWindowMessageW(const WCHAR* pszName);

/// A descriptor that is readable while messages are pending for the calling thread, for an external event
/// loop. Owned by the queue. Drain with PeekMessageW until it returns false, which makes the descriptor
/// unreadable again.
int GetQueueDescriptor();
/// Messages dropped because the queue of the calling thread was full.
unsigned long long GetLostMessages();

#pragma GCC visibility pop
