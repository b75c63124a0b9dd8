#include "gpsengine/link/precisetimer.h"

#include "gpsengine/link/ticks.h"
#include "gpsengine/platform/event.h"
#include "tests/support/basics.h"

namespace {

// A window that notes when its ticks come, and may be slow to handle them.
class Clockface : public CWnd {
 public:
  explicit Clockface(DWORD nSlowness = 0) : m_nSlowness(nSlowness) { Create(); }

  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
    if (message != WM_PRECISE_TIMER) return 0;
    EXPECT_EQ(lParam, 0);
    ticks.push_back({GetTickCount(), wParam});
    if (m_nSlowness > 0) Sleep(m_nSlowness);
    return 0;
  }

  /// Handles messages until there are `nTicks` or the time is over.
  std::size_t Run(std::size_t nTicks, DWORD ms) {
    for (const DWORD nBegin = GetTickCount(); ticks.size() < nTicks && GetTickCount() - nBegin < ms;) {
      MsgWaitForMultipleObjects(0, nullptr, 10);
      for (MSG message; PeekMessageW(&message, PM_REMOVE);) DispatchMessageW(message);
    }
    return ticks.size();
  }

  std::vector<std::pair<DWORD, WPARAM>> ticks;  ///< When, and of which timer.

 private:
  DWORD m_nSlowness;
};

constexpr DWORD kLong = 10000;  // more than any tick here takes, on a slow machine too

}  // namespace

TEST(PreciseTimer, RefusesToTickForNobodyOrAtNoInterval) {
  Clockface window;
  CPreciseTimer timer;
  EXPECT_FALSE(timer.Start(nullptr, 10) || timer.Start(&window, 0) || timer.Start(&window, -5));
  EXPECT_EQ(window.Run(1, 30), 0u);
}

TEST(PreciseTimer, TicksUnderItsNumberUntilItIsStopped) {
  Clockface window;
  CPreciseTimer first, second;
  const int nFirst = first.Start(&window, 10);
  EXPECT_GT(nFirst, 0);
  EXPECT_EQ(first.Start(&window, 60000), nFirst) << "a running timer goes on as it was";
  EXPECT_EQ(window.Run(3, kLong), 3u);
  first.Stop();
  EXPECT_EQ(second.Start(&window, 10), nFirst + 1);
  window.ticks.clear();
  EXPECT_EQ(window.Run(3, kLong), 3u);
  for (const auto& [time, number] : window.ticks) EXPECT_EQ(number, static_cast<WPARAM>(nFirst) + 1);
  EXPECT_EQ(first.Start(&window, 10), nFirst) << "a stopped timer starts again";
  second.Stop();
  window.ticks.clear();
  EXPECT_EQ(window.Run(1, kLong), 1u);
}

// After a tick that takes longer than the period there is a pause of 10 ms and a wait of 1 ms, and no tick
// is made up for. Otherwise the waits stand for the time of the window, so that a period holds from tick to
// tick.
TEST(PreciseTimer, AllowsForTheTimeThatTheWindowTakes) {
  // The window's slowness, the period, what lies at least between two ticks on the whole, after the first
  // period, and the longest that the shortest may take: 80 ms and 100 would be 180.
  const std::tuple<DWORD, int, DWORD, DWORD> rows[] = {{30, 10, 40, kLong}, {80, 100, 98, 165}};
  for (const auto& [slowness, period, least, most] : rows) {
    Clockface window(slowness);
    CPreciseTimer timer;
    const DWORD start = GetTickCount();
    timer.Start(&window, period);
    ASSERT_EQ(window.Run(1, kLong), 1u);
    DWORD shortest = kLong;
    // On a busy machine most come late. One that comes in time is enough.
    for (std::size_t i = 1; i < 4 || (i < 50 && shortest > most); ++i) {
      ASSERT_EQ(window.Run(i + 1, kLong), i + 1);
      shortest = std::min(shortest, window.ticks[i].first - window.ticks[i - 1].first);
    }
    timer.Stop();
    // From the start: a tick that comes late to the window is nearer to the next one.
    EXPECT_GE(window.ticks.back().first - start,
              static_cast<DWORD>(period) + least * (window.ticks.size() - 1));
    EXPECT_LE(shortest, most);
  }
}

TEST(PreciseTimer, LetsGoOfAWindowThatGoesAway) {
  CPreciseTimer timer;
  {
    Clockface window;
    timer.Start(&window, 1);
    Sleep(20);  // the timer is inside its send by now, and nobody takes the message
  }
  Clockface other;
  EXPECT_GT(timer.Start(&other, 1), 0);
  EXPECT_EQ(other.Run(1, 30), 0u) << "it still belongs to the first window";
  timer.Stop();
  timer.Start(&other, 1);
  EXPECT_EQ(other.Run(2, kLong), 2u);
}

TEST(PreciseTimer, TakesUpANewStartRightBehindAStop) {
  Clockface first, second;
  CPreciseTimer timer;
  timer.Start(&first, 1);
  first.Run(1, kLong);
  for (int i = 0; i < 50; ++i) {
    timer.Stop();
    timer.Start(i % 2 == 0 ? &second : &first, 1);
  }
  timer.Stop();
  timer.Start(&second, 1);
  second.Run(1, kLong);
  first.ticks.clear();
  second.ticks.clear();
  EXPECT_EQ(second.Run(5, kLong), 5u);
  EXPECT_EQ(first.ticks.size(), 0u);
}

TEST(Ticks, GoOnOverAWrapOfThePlatformsTick) {
  constexpr std::tuple<DWORD, DWORD, DWORD> steps[] = {{1000, 1010, 10},
                                                       {1000, 990, 0u - 10},   // set back
                                                       {0x7FFFFFF0, 5, 0x14},  // a tick of 31 bits
                                                       {0x7FFFFFF0, 0x80000005, 0x15},
                                                       {0xFFFFFFF0, 5, 0x13}};  // of 32, 2 ms short
  for (const auto& [from, to, passed] : steps) {
    CTicks ticks;
    ticks.Continue(from);
    const DWORD nBegin = ticks.Continue(from);
    EXPECT_EQ(ticks.Continue(to) - nBegin, passed) << from << " to " << to;
  }
}
