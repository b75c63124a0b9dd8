#pragma once

#include <memory>

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

// Windows and messages. A window belongs to the thread that created it; that thread has a queue, takes its
// messages out with PeekMessageW or CWinApp::PumpMessage and hands them to the windows with DispatchMessageW.

constexpr UINT WM_QUIT = 0x0012;  ///< Ends a message loop; PostQuitMessage makes it.
constexpr UINT WM_APP = 0x8000;   ///< From here up messages belong to applications.
constexpr UINT PM_NOREMOVE = 0;   ///< PeekMessageW leaves the message in the queue.
constexpr UINT PM_REMOVE = 1;     ///< PeekMessageW takes the message out.

/// Frees what a message carries when nobody takes it.
using MessageDisposer = void (*)(WPARAM wParam);

/// What travels with a message without standing in it.
class MessageFreight {
 public:
  virtual ~MessageFreight() = default;
  /// Runs on the window's thread as it takes the message out of its queue, and not at all if nobody does.
  virtual void Arrive() = 0;
};

/// One message, as it lies in a queue.
struct MSG {
  HWND hwnd = nullptr;                   ///< Whom it is for.
  UINT message = 0;                      ///< Which one it is.
  WPARAM wParam = 0;                     ///< What it carries.
  LPARAM lParam = 0;                     ///< What it carries besides.
  MessageDisposer pfnDispose = nullptr;  ///< Frees wParam; null: there is nothing to free.
  MessageFreight* pFreight = nullptr;    ///< The queue's own; null in a message that was taken out.
};

class CWnd;

/// One row of a message map: which message a window class handles, and with what.
struct AFX_MSGMAP_ENTRY {
  UINT nMessage;  ///< The message, exactly; 0 ends the rows.
  LRESULT (*pfnHandle)(CWnd& window, WPARAM wParam, LPARAM lParam);  ///< Handles it, on the window's thread.
};
/// The rows of a class, and the map of its base class, which is asked next.
struct AFX_MSGMAP {
  const AFX_MSGMAP* (*pfnGetBaseMap)();  ///< Null for the root.
  const AFX_MSGMAP_ENTRY* lpEntries;     ///< The rows of this class.
};

/// A window without a picture: an address for messages, with a procedure that handles them.
class CWnd {
 public:
  CWnd() = default;
  virtual ~CWnd();  ///< Destroys the window. Runs on the window's thread.
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  /// Makes the window, on the calling thread. False if it exists already.
  bool Create();
  /// Posted messages that nobody will handle now are disposed of, senders that wait are released with 0.
  bool DestroyWindow();
  /// The window's name; null before Create and after DestroyWindow.
  HWND GetSafeHwnd() const { return m_hWnd; }

  /// Handles one message, on the window's thread. The default goes by the message map and gives 0 for a
  /// message that has no row in it.
  virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);

 protected:
  /// The rows of the object's own class, and those of this one, which has none.
  ///@{
  virtual const AFX_MSGMAP* GetMessageMap() const;
  static const AFX_MSGMAP* GetThisMessageMap();
  ///@}

 private:
  HWND m_hWnd = nullptr;
};

/// Whether this window exists now; from any thread.
bool IsWindow(HWND hWnd);

/// The messages that a queue holds at most. A thread that does not drain its queue loses the newest ones, so
/// that memory stays bounded.
constexpr int kMaxPostedMessages = 10000;

/// Puts a message into the queue of the window's thread and returns at once; from any thread. If there is no
/// such window, if its queue is full, or if the window goes away before the message is handled, `pfnDispose`
/// is called with wParam. False in the first two cases.
bool PostMessageW(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam,
                  MessageDisposer pfnDispose = nullptr);
/// The same for a message of wParam and lParam 0 with a freight, which is deleted with it.
bool PostMessageW(HWND hWnd, UINT message, std::unique_ptr<MessageFreight> freight);
/// Blocks until the window's procedure has handled the message, and gives its result. 0 if the window is not
/// there or goes away. From any thread; a window's thread handles what others send while it takes or waits
/// for messages.
LRESULT SendMessageW(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);
/// Handles what other threads have sent, then gives the next posted message of the calling thread, if there
/// is one.
bool PeekMessageW(MSG* pMsg, UINT nRemove);
/// Hands a message that was taken out of the queue to its window, which owns from then on what it carries.
LRESULT DispatchMessageW(const MSG& msg);
/// Ends the message loop of the calling thread: PumpMessage gives false.
void PostQuitMessage();
/// A message number of its own for this text, the same in the whole process, from 0xC000 up.
UINT RegisterWindowMessageW(const WCHAR* pszName);

/// A descriptor that is readable while messages wait for the calling thread, for a foreign event loop. It
/// belongs to the queue. Drain with PeekMessageW until it gives false, which makes the descriptor unreadable
/// again.
int GetQueueDescriptor();
/// Messages that were thrown away because the queue of the calling thread was full.
unsigned long long GetLostMessages();

#pragma GCC visibility pop
