// Events, threads and waits of the platform layer, in real time of tens of milliseconds.
#include <gtest/gtest.h>

#include <thread>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/rehearsal.h"

namespace {

constexpr DWORD kShort = 20;
constexpr DWORD kLong = 10000;

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
    const std::jthread other([act, event = events[1]] {
      Sleep(kShort);
      act(event);
    });
    EXPECT_EQ(WaitForMultipleObjects(2, events, kLong), result);
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

TEST(Rehearsal, LetsTimePassAtOnceAndOnlyForItsOwnThread) {
  CRehearsal rehearsal;
  const std::uint64_t start = CurrentClock().Milliseconds();
  const HANDLE event = CreateEventW(false, false);
  Sleep(23000);
  EXPECT_EQ(WaitForSingleObject(event, 500), WAIT_TIMEOUT);
  EXPECT_EQ(CurrentClock().Milliseconds() - start, 23500u);
  EXPECT_EQ(rehearsal.Transcript(), "wait 23000; wait 500");
  std::jthread([start] {
    const std::uint64_t before = CurrentClock().Milliseconds();
    Sleep(kShort);
    EXPECT_GE(CurrentClock().Milliseconds() - before, kShort);
    EXPECT_NE(CurrentClock().Milliseconds(), start + 23500);
  }).join();
  CloseHandle(event);
}

}  // namespace
