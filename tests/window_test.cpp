// Windows, queues, messages, events and waits of the platform layer.
#include "gpsengine/platform/window.h"

#include <poll.h>

#include "gpsengine/platform/application.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/file.h"
#include "gpsengine/platform/rehearsal.h"
#include "gpsengine/platform/resource.h"
#include "gpsengine/platform/shared.h"
#include "tests/support/basics.h"

namespace {

constexpr UINT kNumber = WM_APP + 1;
constexpr DWORD kShort = 20, kLong = 10000;

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

TEST(Window, ThatIsGoneLosesNoMemory) {
  g_nDisposed = 0;
  HWND name = nullptr;
  {
    Recorder window;
    name = window.GetSafeHwnd();
    EXPECT_FALSE(window.Create()) << "a second time";
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

TEST(Window, OfAnotherThreadAnswersWhatIsSentUntilItGoesAway) {
  CShared<HWND> name = nullptr;
  const HANDLE made = CreateEventW(true, false), stop = CreateEventW(true, false),
               left = CreateEventW(true, false);
  std::jthread other([&] {
    auto spare = std::make_unique<Recorder>();
    Recorder window;
    name = window.GetSafeHwnd();
    SetEvent(made);
    Sleep(20);  // with a message of the other one's on its way
    spare.reset();
    while (MsgWaitForMultipleObjects(1, &stop, kLong) != WAIT_OBJECT_0) continue;  // the wait delivers
    SetEvent(left);
    Sleep(30);  // with a message that it will never take
  });
  WaitForSingleObject(made, INFINITE);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(SendMessageW(name, kNumber, i, 1000), 1000 + i);
  SetEvent(stop);
  WaitForSingleObject(left, INFINITE);
  EXPECT_EQ(SendMessageW(name, kNumber, 5, 0), 0);
  other.join();
  for (const HANDLE event : {made, stop, left}) CloseHandle(event);
}

TEST(Queue, HasADescriptorThatIsReadableWhileMessagesWait) {
  Recorder window;
  Drain();
  const auto isReadable = [] {
    pollfd source{GetQueueDescriptor(), POLLIN, 0};
    return poll(&source, 1, 0) == 1;
  };
  for (int round = 0; round < 2; ++round) {
    EXPECT_FALSE(isReadable());
    for (const int number : {1, 2}) EXPECT_TRUE(PostMessageW(window.GetSafeHwnd(), kNumber, number, 0));
    EXPECT_TRUE(isReadable());
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, PM_NOREMOVE));
    PeekMessageW(&message, PM_REMOVE);
    DispatchMessageW(message);
    EXPECT_TRUE(isReadable());
    Drain();
  }
  EXPECT_EQ(window.got, (std::vector{1, 2, 1, 2}));
  PostQuitMessage();
  EXPECT_TRUE(isReadable());
  Drain();
}

TEST(Queue, IsPassedOverByWhatIsPostedAtOnce) {
  class Loaded : public MessageFreight {
   public:
    explicit Loaded(std::vector<int>& got) : m_Got(got) {}
    ~Loaded() override { m_Got.push_back(8); }
    void Arrive() override { m_Got.push_back(7); }

   private:
    std::vector<int>& m_Got;
  };
  Recorder window;
  const HWND name = window.GetSafeHwnd();
  PostMessageW(name, kNumber, 1, 0);
  {
    const CPostAtOnce at_once(window);
    EXPECT_TRUE(PostMessageW(name, kNumber, 2, 0));
    EXPECT_TRUE(PostMessageW(name, kNumber, std::make_unique<Loaded>(window.got)));
    std::jthread([name] { PostMessageW(name, kNumber, 3, 0); }).join();
    EXPECT_EQ(window.got, (std::vector{2, 7, 0, 8})) << "from this thread alone";
    g_nDisposed = 0;
    EXPECT_FALSE(PostMessageW(nullptr, kNumber, 1, 0, CountDisposal));
    EXPECT_EQ(g_nDisposed, 1);
  }
  PostMessageW(name, kNumber, 4, 0);
  Drain();
  EXPECT_EQ(window.got, (std::vector{2, 7, 0, 8, 1, 3, 4}));
  const CPostAtOnce at_once(window);
  EXPECT_TRUE(window.DestroyWindow());
  EXPECT_FALSE(window.DestroyWindow());
  EXPECT_FALSE(PostMessageW(nullptr, kNumber, 5, 0)) << "to no window";
}

TEST(Window, GivesTheSameNumberForAMessageOfTheSameName) {
  const UINT number = RegisterWindowMessageW(u"position");
  EXPECT_EQ(RegisterWindowMessageW(u"position"), number);
  EXPECT_TRUE(number >= 0xC000 && RegisterWindowMessageW(u"motion") > number);
}

TEST(Application, PumpsUntilItIsToldToQuitAndForgetsAWindowThatIsDestroyed) {
  CWinApp app("gpsengine-test");
  app.SetMainWnd(std::make_unique<Recorder>().get());
  EXPECT_FALSE(IsWindow(AfxGetMainWnd()));
  Recorder window;
  CRehearsal time;
  time.SetStepHandler([&](const CRehearsal::Step&) {
    for (const int number : {1, 2}) PostMessageW(window.GetSafeHwnd(), kNumber, number, 0);
    PostQuitMessage();
  });
  app.Run();
  EXPECT_EQ(window.got, (std::vector{1, 2}));
}

TEST(Resources, AreTheTextsThatHostsShow) {
  WCHAR buffer[64];
  std::string texts;
  for (UINT id = 0; id < 20; ++id) texts += CString(buffer, LoadStringW(id, buffer, 64)).ToUtf8() + '|';
  EXPECT_EQ(texts,
            "|No GPS signal!|GPS|DGPS|RTK-Code|RTK-Fixed|RTK-Float|Unknown|   PDOP: |   HDOP: |   %d of %d "
            "Satellites|Could not open file to log raw data!|Unable to open the emulation file: '%s'.|Num "
            "Epochs: %d, Time: %d min.|No Error.|No GPS Receiver Is Assigned.|Can't Initialize a Receiver.|"
            "Can't Start GPS Thread.|Unknown GPS Error Code.||");
  EXPECT_EQ(LoadStringW(5, buffer, 4), 3);
  EXPECT_EQ(CString(buffer), "RTK");
  std::fill_n(buffer, 64, u'x');
  EXPECT_EQ(FormatMessageW(ENOENT, buffer, 8), 7u);
  EXPECT_EQ(CString(buffer), "No such");
  EXPECT_EQ(FormatMessageW(ENOENT, buffer, 0) + FormatMessageW(ENOENT, nullptr, 8), 0u) << "no room";
  EXPECT_TRUE(FormatMessageW(ENOENT, buffer, 1) == 0 && buffer[0] == 0) << "room for the end alone";
  const auto& [id, width, height, font, size, title, text, x, y, w, h] = *FindDialogTemplate(129);
  EXPECT_EQ(testing::PrintToString(std::array{width, height, size, x, y, w, h}),
            "{ 133, 31, 8, 7, 7, 119, 17 }");
  EXPECT_EQ(font + std::string("/") + title + '/' + text,
            "Tahoma/Dialog/Please wait while resetting receiver");
}

TEST(Event, OfManualResetEndsEveryWaitAndOfAutomaticResetOne) {
  for (const bool manual : {true, false}) {
    const HANDLE event = CreateEventW(manual, true);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), manual ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
    ResetEvent(event);
    EXPECT_EQ(WaitForSingleObject(event, kShort), WAIT_TIMEOUT);
    CloseHandle(event);
  }
}

TEST(Event, ThatIsSetOrClosedElsewhereReleasesWhoWaits) {
  const HANDLE events[] = {CreateEventW(false, false), CreateEventW(false, false)};
  for (const auto& [act, result] : {std::pair(&SetEvent, WAIT_OBJECT_0 + 1), {&CloseHandle, WAIT_FAILED}}) {
    const std::jthread other([act = act, event = events[1]] {
      Sleep(kShort);
      act(event);
    });
    EXPECT_EQ(WaitForMultipleObjects(2, events, INFINITE), result);
  }
  CloseHandle(events[0]);
}

TEST(Handle, IsNeverGivenOutTwice) {
  const HANDLE first = CreateEventW(false, false);
  EXPECT_TRUE(CloseHandle(first));
  const HANDLE second = CreateEventW(false, false);
  EXPECT_NE(first, second);
  EXPECT_FALSE(SetEvent(first));
  EXPECT_FALSE(CloseHandle(first));
  EXPECT_EQ(WaitForSingleObject(first, kLong), WAIT_FAILED);
  CloseHandle(second);
}

}  // namespace
