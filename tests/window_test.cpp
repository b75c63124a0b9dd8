// Windows, queues and messages of the platform layer.
#include "gpsengine/platform/window.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <functional>
#include <vector>

#include "gpsengine/platform/application.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/platform/thread.h"

namespace {

constexpr UINT kNumber = WM_APP + 1;

class Recorder : public CWnd {
 public:
  Recorder() { Create(); }
  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
    if (message != kNumber) return CWnd::WindowProc(message, wParam, lParam);
    got.push_back(static_cast<int>(wParam));
    return static_cast<LRESULT>(wParam) + lParam;
  }
  std::vector<int> got;
};

int g_nDisposed = 0;
void CountDisposal(WPARAM) {
  ++g_nDisposed;
}

void Drain() {
  for (MSG message; PeekMessageW(&message, PM_REMOVE);) DispatchMessageW(message);
}

bool IsReadable(int descriptor) {
  pollfd source{descriptor, POLLIN, 0};
  return poll(&source, 1, 0) == 1;
}

TEST(Window, GetsWhatIsPostedInOrder) {
  Recorder window;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(PostMessageW(window.GetSafeHwnd(), kNumber, i, 0));
  EXPECT_TRUE(window.got.empty());
  MSG message;
  EXPECT_TRUE(PeekMessageW(&message, PM_NOREMOVE));
  Drain();
  EXPECT_EQ(window.got, (std::vector{0, 1, 2}));
}

TEST(Window, ThatIsGoneLosesNoMemory) {
  g_nDisposed = 0;
  HWND name = nullptr;
  {
    Recorder window;
    name = window.GetSafeHwnd();
    PostMessageW(name, kNumber, 1, 0, CountDisposal);
    EXPECT_EQ(g_nDisposed, 0);
  }
  EXPECT_EQ(g_nDisposed, 1);
  EXPECT_FALSE(IsWindow(name));
  EXPECT_FALSE(PostMessageW(name, kNumber, 1, 0, CountDisposal));
  EXPECT_FALSE(PostMessageW(nullptr, kNumber, 1, 0, CountDisposal));
  EXPECT_EQ(g_nDisposed, 3);
  EXPECT_EQ(SendMessageW(name, kNumber, 1, 0), 0);
}

TEST(Window, WhoseThreadDoesNotDrainLosesTheNewest) {
  Recorder window;
  g_nDisposed = 0;
  const auto lost = GetLostMessages();
  for (int i = 0; i < kMaxPostedMessages + 5; ++i)
    PostMessageW(window.GetSafeHwnd(), kNumber, i, 0, CountDisposal);
  EXPECT_EQ(g_nDisposed, 5);
  EXPECT_EQ(GetLostMessages() - lost, 5u);
  Drain();
  EXPECT_EQ(window.got.back(), kMaxPostedMessages - 1);
}

// A thread that owns a window and pumps its messages until it is told to stop.
class WindowThread {
 public:
  WindowThread() : m_hReady(CreateEventW(true, false)), m_hStop(CreateEventW(true, false)) {
    m_pThread = AfxBeginThread(
        [](void* self) {
          static_cast<WindowThread*>(self)->Main();
          return 0u;
        },
        this);
    WaitForSingleObject(m_hReady, INFINITE);
  }
  ~WindowThread() {
    SetEvent(m_hStop);
    m_pThread->Join();
    CloseHandle(m_hReady);
    CloseHandle(m_hStop);
  }
  HWND Name() const { return m_hWnd; }

 private:
  void Main() {
    Recorder window;
    m_hWnd = window.GetSafeHwnd();
    SetEvent(m_hReady);
    while (MsgWaitForMultipleObjects(1, &m_hStop, INFINITE) != WAIT_OBJECT_0) Drain();
  }

  HANDLE m_hReady;
  HANDLE m_hStop;
  CShared<HWND> m_hWnd = nullptr;
  std::unique_ptr<CWinThread> m_pThread;
};

TEST(Window, OfAnotherThreadAnswersWhatIsSent) {
  WindowThread other;
  for (int i = 0; i < 100; ++i) ASSERT_EQ(SendMessageW(other.Name(), kNumber, i, 1000), 1000 + i);
}

TEST(Window, ThatGoesAwayReleasesItsSender) {
  // The window's thread never services its queue, and ends.
  CShared<HWND> name = nullptr;
  const HANDLE made = CreateEventW(true, false);
  struct Start {
    CShared<HWND>* pName;
    HANDLE hMade;
  } start{&name, made};
  auto thread = AfxBeginThread(
      [](void* param) {
        const auto* from = static_cast<Start*>(param);
        Recorder window;
        *from->pName = window.GetSafeHwnd();
        SetEvent(from->hMade);
        WaitForSingleObject(from->hMade, 0);
        const HANDLE never = CreateEventW(true, false);
        WaitForSingleObject(never, 30);
        CloseHandle(never);
        return 0u;
      },
      &start);
  WaitForSingleObject(made, INFINITE);
  EXPECT_EQ(SendMessageW(name, kNumber, 5, 0), 0);
  thread->Join();
  CloseHandle(made);
}

TEST(Queue, HasADescriptorThatIsReadableWhileMessagesWait) {
  Recorder window;
  Drain();
  const int descriptor = GetQueueDescriptor();
  EXPECT_FALSE(IsReadable(descriptor));
  PostMessageW(window.GetSafeHwnd(), kNumber, 1, 0);
  PostMessageW(window.GetSafeHwnd(), kNumber, 2, 0);
  EXPECT_TRUE(IsReadable(descriptor));
  MSG message;
  PeekMessageW(&message, PM_REMOVE);
  EXPECT_TRUE(IsReadable(descriptor));
  Drain();
  EXPECT_FALSE(IsReadable(descriptor));
  PostMessageW(window.GetSafeHwnd(), kNumber, 3, 0);
  EXPECT_TRUE(IsReadable(descriptor));
  Drain();
}

TEST(Application, PumpsUntilItIsToldToQuit) {
  CWinApp app("gpsengine-test");
  Recorder window;
  PostMessageW(window.GetSafeHwnd(), kNumber, 1, 0);
  PostQuitMessage();
  app.Run();
  EXPECT_EQ(window.got, std::vector{1});
}

TEST(Application, ForgetsAMainWindowThatIsDestroyed) {
  CWinApp app("gpsengine-test");
  {
    Recorder window;
    app.SetMainWnd(&window);
    EXPECT_EQ(AfxGetMainWnd(), window.GetSafeHwnd());
  }
  EXPECT_FALSE(IsWindow(AfxGetMainWnd()));
}

TEST(RegisteredMessage, IsTheSameForTheSameText) {
  const UINT first = RegisterWindowMessageW(u"one");
  EXPECT_EQ(RegisterWindowMessageW(u"one"), first);
  EXPECT_NE(RegisterWindowMessageW(u"two"), first);
  EXPECT_GE(first, 0xC000u);
}

}  // namespace
