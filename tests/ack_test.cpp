#include "gpsengine/link/ack.h"

#include <ctime>

#include "tests/support/enginetest.h"

using namespace std::chrono_literals;

namespace {

void Publish(bool bAck) {
  CGPSData record;
  record.m_Status.m_bAck = bAck;
  CAck::OnNewGPSData(&record);
}

constexpr int kLong = 20000, kShort = 30;  // milliseconds
constexpr DWORD kSoon = 5000;              // with a slow machine in mind

}  // namespace

TEST(Ack, TimesOutInTheTimeGivenWithAWindowForTheTickOrWithout) {
  Publish(true);  // before the wait
  for (const bool bWindow : {true, false}) {
    CAck ack;
    EXPECT_TRUE(!bWindow || ack.Create());
    Publish(false);
    const auto nTook = Took([&] { EXPECT_FALSE(ack.Wait(kShort)); });
    EXPECT_GE(nTook + 1, static_cast<DWORD>(kShort));
    EXPECT_LT(nTook, kSoon);
  }
}

TEST(Ack, IsEndedByATickButWinsOverOne) {
  for (const bool bAck : {false, true}) {
    CAck ack;
    ASSERT_TRUE(ack.Create());
    EXPECT_EQ(SendMessageW(ack.GetSafeHwnd(), WM_PRECISE_TIMER, 1, 0), 0);
    Publish(bAck);
    EXPECT_LT(Took([&] { EXPECT_EQ(ack.Wait(kLong), bAck); }), kSoon);
  }
}

TEST(Ack, SleepsUntilAnotherThreadPublishesOne) {
  for (const int nTimeout : {kLong, 0}) {  // 0: for as long as it takes
    CAck ack;
    ASSERT_TRUE(ack.Create());
    EXPECT_EQ(SendMessageW(ack.GetSafeHwnd(), WM_GPS_NEW_BIN, 0, 0), 0) << "which is no tick";
    std::jthread reader([] {
      Publish(false);
      std::this_thread::sleep_for(100ms);
      Publish(true);
    });
    const std::clock_t begin = std::clock();
    EXPECT_LT(Took([&] { EXPECT_TRUE(ack.Wait(nTimeout)); }), kSoon);
    EXPECT_LT(std::clock() - begin, CLOCKS_PER_SEC / 20) << "processor time of a wait of 100 ms";
  }
}

TEST(Ack, LetsTheHostHandleItsMessages) {
  for (const bool bWithApplication : {true, false}) {
    std::unique_ptr<CWinApp> pApp;
    if (bWithApplication) pApp = std::make_unique<CWinApp>("gpsengine-test");
    HostWindow window;
    CAck ack;
    ASSERT_TRUE(ack.Create());
    std::jthread reader([hWnd = window.GetSafeHwnd()] {
      for (int i = 0; i < 3; ++i) {
        PostMessageW(hWnd, WM_GPS_NEW_DATA, reinterpret_cast<WPARAM>(new CGPSData), 0);
        std::this_thread::sleep_for(10ms);
      }
      SendMessageW(hWnd, WM_GPS_NEW_BIN, 0, 0);  // returns when the window has handled it, and all before
      Publish(true);
    });
    EXPECT_TRUE(ack.Wait(kLong));
    EXPECT_EQ(window.records.size(), 3u);
    EXPECT_EQ(window.blocks, 1);
  }
}

TEST(Ack, LeavesTheEndOfTheHostsLoopToTheHost) {
  for (const bool bWithApplication : {true, false}) {
    std::unique_ptr<CWinApp> pApp;
    if (bWithApplication) pApp = std::make_unique<CWinApp>("gpsengine-test");
    PostQuitMessage();
    CAck ack;
    ASSERT_TRUE(ack.Create());
    EXPECT_FALSE(ack.Wait(kShort));
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, PM_REMOVE));
    EXPECT_EQ(message.message, WM_QUIT);
  }
}
