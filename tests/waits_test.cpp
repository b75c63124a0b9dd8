// Events, threads and waits of the platform layer, in real time of tens of milliseconds.
#include <gtest/gtest.h>

#include "gpsengine/platform/clock.h"
#include "gpsengine/platform/event.h"
#include "gpsengine/platform/rehearsal.h"
#include "gpsengine/platform/shared.h"
#include "gpsengine/platform/thread.h"

namespace {

constexpr DWORD kShort = 20;
constexpr DWORD kLong = 10000;

// Runs a function on a thread of its own, joined at the end.
class Elsewhere {
 public:
  explicit Elsewhere(std::function<void()> work) : m_Work(std::move(work)) {
    m_pThread = AfxBeginThread(
        [](void* self) {
          static_cast<Elsewhere*>(self)->m_Work();
          return 0u;
        },
        this);
  }
  ~Elsewhere() { m_pThread->Join(); }

 private:
  std::function<void()> m_Work;
  std::unique_ptr<CWinThread> m_pThread;
};

TEST(Event, OfAutomaticResetEndsOneWaitAndOfManualResetAll) {
  const HANDLE automatic = CreateEventW(false, true);
  EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_TIMEOUT);
  const HANDLE manual = CreateEventW(true, false);
  SetEvent(manual);
  EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);
  ResetEvent(manual);
  EXPECT_EQ(WaitForSingleObject(manual, kShort), WAIT_TIMEOUT);
  CloseHandle(automatic);
  CloseHandle(manual);
}

TEST(Event, WakesWhoWaitsForAnyOfSeveral) {
  const HANDLE events[] = {CreateEventW(false, false), CreateEventW(false, false)};
  Elsewhere other([&] {
    Sleep(kShort);
    SetEvent(events[1]);
  });
  EXPECT_EQ(WaitForMultipleObjects(2, events, kLong), WAIT_OBJECT_0 + 1);
  for (const HANDLE event : events) CloseHandle(event);
}

TEST(Event, ThatIsClosedReleasesWhoWaits) {
  const HANDLE event = CreateEventW(false, false);
  Elsewhere other([&] {
    Sleep(kShort);
    CloseHandle(event);
  });
  EXPECT_EQ(WaitForSingleObject(event, kLong), WAIT_FAILED);
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
  CShared<bool> realTime = false;
  {
    Elsewhere other([&] {
      const std::uint64_t before = CurrentClock().Milliseconds();
      Sleep(kShort);
      realTime =
          CurrentClock().Milliseconds() - before >= kShort && CurrentClock().Milliseconds() != start + 23500;
    });
  }
  EXPECT_TRUE(realTime);
  CloseHandle(event);
}

}  // namespace
