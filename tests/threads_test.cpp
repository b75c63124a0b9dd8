// A host that does anything at any moment, while data flow and boxes hold the reader thread up.
// ThreadSanitizer looks on.
#include <atomic>
#include <random>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/link/precisetimer.h"
#include "gpsengine/platform/messagebox.h"
#include "tests/support/basics.h"
#include "tests/support/hostwindow.h"
#include "tests/support/pseudoterminal.h"
#include "tests/support/wirebuilder.h"

using namespace std::chrono_literals;

namespace {

constexpr int kPort = 9;

// What stops with no command to the line, and so at once.
constexpr const char* kModels[] = {"Other", "Garmin", "Holux", "SiRF", "Leica", "Trimble"};

// The host's thread: it sleeps not at all, and waits for nothing as long as it should, but by its clock.
class Impatience : public Clock {
 public:
  std::uint64_t Milliseconds() override { return Clock::Milliseconds() + ahead; }
  void Sleep(DWORD) override { std::this_thread::yield(); }
  bool Wait(WaitKind, DWORD ms, const std::function<bool(DWORD)>& block) override {
    ++waits;
    const bool come = block(std::min(ms, limit));
    if (!come && ms > limit) ahead += ms - limit;
    return come;
  }
  std::atomic<int> waits = 0;
  DWORD limit = 2;
  std::uint64_t ahead = 0;
};

const std::string kFix = "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n";

// Descriptors and threads.
auto Inventory() {
  return std::pair(Entries("/proc/self/fd"), Entries("/proc/self/task"));
}

// Late threads need a moment to end.
void ExpectNothingLeftBut(const std::pair<std::ptrdiff_t, std::ptrdiff_t>& before) {
  Soon([&] { return Inventory() == before; });
  EXPECT_EQ(Inventory(), before);
}

class ThreadsTest : public testing::Test {
 protected:
  ThreadsTest() {
    MapComPort(kPort, CString::FromUtf8(m_Terminal.Name()));
    m_App.SetMainWnd(&m_Window);
    SetClock(&m_Clock);
  }
  ~ThreadsTest() override {
    SetClock(nullptr);
    SetMessageBoxHandler(nullptr);
  }

  void MakeEngine(const std::string& recordFile) {
    m_pEngine = std::make_unique<CGPSEngine>();
    m_pEngine->m_strRecordFile = CString::FromUtf8(recordFile);
    Select("Other");
  }
  void Select(const char* model) {
    CGPSReceiver* const receiver = m_pEngine->FindReceiver(model);
    receiver->SetupReceiver(kPort, 0, 0.0, "", false);
    m_pEngine->SetReceiver(receiver);
  }
  void Drain() {
    m_Window.Drain();
    m_nRecords += m_Window.records.size();
    m_Window.records.clear();
    m_Window.strings.clear();
    m_Window.ephemerides.clear();
  }

  const bool m_bWarm =
      (std::jthread([] {}), true);  // a sanitizer starts a thread of its own with the first one
  const std::pair<std::ptrdiff_t, std::ptrdiff_t> m_Before = Inventory();
  CWinApp m_App{"gpsengine-test"};
  HostWindow m_Window;
  PseudoTerminal m_Terminal;
  Impatience m_Clock;
  std::unique_ptr<CGPSEngine> m_pEngine;
  std::size_t m_nRecords = 0;
};

TEST_F(ThreadsTest, StandAThousandRoundsOfAnything) {
  std::atomic<int> boxes{0};
  SetMessageBoxHandler([&boxes](const CString&, BoxKind) {
    ++boxes;
    std::this_thread::sleep_for(4ms);  // longer than the host waits
  });
  const TemporaryFolder folder;
  const auto dawdle = [](GPSNotificationType, CGPSNotification*, void*) { std::this_thread::sleep_for(3ms); };
  std::minstd_rand dice(1U + static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
  const auto receiver = [this]() -> CGPSReceiver& { return *m_pEngine->GetReceiver(); };
  const std::function<void()> actions[] = {
      [&] { EXPECT_TRUE(m_pEngine->Start()); },
      [&] { EXPECT_TRUE(m_pEngine->Resume()); },
      [&] { m_pEngine->Stop(); },
      [&] { m_pEngine->Pause(); },
      [&] { Select(kModels[dice() % std::size(kModels)]); },
      [&] { receiver().Send("$COMMAND"); },
      [&] { receiver().SetGgaOnlyNMEA(); },
      [&] { receiver().SetupReceiver(kPort, static_cast<int>(dice() % 3), 2.0, "", false); },
      [&] { receiver().ResetSpeedEngine(); },
      [&] { receiver().AddNotificationCallback(GPS_NOTIFY_EPHEMERIS, dawdle, nullptr); },
      [&] { receiver().MonitorNmea(!receiver().HaveGotNmea(GPS_STRING_GGA)); },
      [&] { m_pEngine->m_bRecordRaw = !m_pEngine->m_bRecordRaw; },
      [&] { m_pEngine->m_bAttachRawData = !m_pEngine->m_bAttachRawData; },
      [&] { m_pEngine->m_ComBuffer.m_bPaused = !m_pEngine->m_ComBuffer.m_bPaused; },
      [&] {
        CWordArray words;
        receiver().GetBinWords(words);
        EXPECT_LE(receiver().GetChecksumErrors(), receiver().GetSentencesRecognised());
        EXPECT_GE(m_pEngine->GetMessages(), 0);
      },
      [&] { m_pEngine.reset(); },
  };
  {
    CPreciseTimer timer;
    timer.Start(&m_Window, 10'000);
    // A receiver that never pauses, and takes what is written.
    const std::jthread talker([this](const std::stop_token& stop) {
      const std::string some = kFix + "$GPGSV,1,1,01,07,45,180,41*42\r\n" + Snv().Message() + "\n" +
                               Mbn().Message() + "\n$>JI,1,2\r\n\xAA\x44\x12 noise $BIN";
      for (; !stop.stop_requested(); std::this_thread::sleep_for(300us)) m_Terminal.Exchange(some);
    });
    for (int round = 0; round < 1000; ++round) {
      if (m_pEngine == nullptr) MakeEngine(dice() % 3 == 0 ? "/nowhere/at/all" : folder / "record");
      m_Clock.limit = static_cast<DWORD>(dice() % 4);
      for (int i = 0; i < 4 && m_pEngine != nullptr; ++i) actions[dice() % std::size(actions)]();
      std::this_thread::sleep_for(500us);
      Drain();
    }
    m_pEngine.reset();
  }
  m_Terminal.HangUp();
  EXPECT_GT(m_nRecords, 100u);
  EXPECT_GT(boxes, 10);
  ExpectNothingLeftBut(m_Before);
}

TEST_F(ThreadsTest, WaitForACallbackThatEndsInTime) {
  struct Slow {
    std::atomic<int>& nWaits;  // of the host
    HANDLE hBegun = CreateEventW(false, false);
    std::atomic<bool> bHostLeaves = false, bEnded = false;
    static void Call(GPSNotificationType, CGPSNotification*, void* pUser) {
      auto& slow = *static_cast<Slow*>(pUser);
      SetEvent(slow.hBegun);
      Soon([&] { return slow.bHostLeaves && slow.nWaits > 0; });
      slow.bEnded = true;
    }
  } slow{m_Clock.waits};
  m_Clock.limit = INFINITE;
  const std::string ephemeris = Snv().Message() + "\n";
  for (const bool by_the_host : {false, true}) {
    slow.bHostLeaves = slow.bEnded = false;
    MakeEngine("");
    m_pEngine->m_bAttachRawData = true;
    m_pEngine->GetReceiver()->AddNotificationCallback(GPS_NOTIFY_EPHEMERIS, &Slow::Call, &slow);
    ASSERT_TRUE(by_the_host || m_pEngine->Start());
    std::jthread host;
    CBinBuffer bytes(ephemeris.data(), static_cast<int>(ephemeris.size()));
    if (by_the_host) host = std::jthread([&, engine = m_pEngine.get()] { engine->UpdateGPSBuffer(bytes); });
    if (!by_the_host) m_Terminal.Send(ephemeris);
    WaitForSingleObject(slow.hBegun, INFINITE);
    m_Clock.waits = 0, slow.bHostLeaves = true;
    m_pEngine.reset();
    EXPECT_TRUE(slow.bEnded && m_Clock.waits > 0) << by_the_host;
  }
  CloseHandle(slow.hBegun);
}

// What a callback holds up: it asks the host's thread for something, which that will not give until the
// engine has gone, or has been started again.
TEST_F(ThreadsTest, LeaveACallbackBehindThatWaitsForTheHost) {
  struct Question {
    HANDLE hAsked = CreateEventW(false, false), hAnswered = CreateEventW(false, false);
    CGPSEngine* pEngine = nullptr;
    static void Ask(GPSNotificationType, CGPSNotification*, void* pUser) {
      auto& asked = *static_cast<Question*>(pUser);
      CBinBuffer more("$", 1);
      EXPECT_FALSE(asked.pEngine->UpdateGPSBuffer(more)) << "in the midst of an update";
      SetEvent(asked.hAsked);
      WaitForSingleObject(asked.hAnswered, INFINITE);
    }
  } questions[2];  // a late thread of the first round takes no answer of the second
  for (const bool destroys : {true, false}) {
    Question& question = questions[destroys ? 0 : 1];
    SCOPED_TRACE(destroys ? "destroyed" : "stopped");
    MakeEngine("");
    question.pEngine = m_pEngine.get();
    m_pEngine->m_bAttachRawData = true;
    CGPSReceiver& receiver = *m_pEngine->GetReceiver();
    receiver.AddNotificationCallback(GPS_NOTIFY_EPHEMERIS, &Question::Ask, &question);
    ASSERT_TRUE(m_pEngine->Start());
    m_Terminal.Send(Snv().Message() + "\n" + kFix);
    while (WaitForSingleObject(question.hAsked, 1000) != WAIT_OBJECT_0) continue;
    const auto before = m_Clock.Milliseconds();
    if (destroys) {
      m_pEngine.reset();
    } else {
      m_pEngine->Stop();
    }
    EXPECT_LT(m_Clock.Milliseconds() - before, 1500u);
    if (destroys) MakeEngine("");
    m_pEngine->GetReceiver()->AddNotificationCallback(GPS_NOTIFY_EPHEMERIS, nullptr, nullptr);
    ASSERT_TRUE(m_pEngine->Start());
    SetEvent(question.hAnswered);
    m_Terminal.Send("\r\n" + kFix);
    EXPECT_TRUE(Soon([&] { return m_Window.Drain(), !m_Window.records.empty(); }));
    m_pEngine.reset();
    m_Window.Drain();
    EXPECT_EQ(m_Window.records.size(), 1u) << "of the second run, and none of the first";
    EXPECT_TRUE(m_Window.ephemerides.empty());
    Drain();
  }
  m_Terminal.HangUp();
  for (const Question& question : questions) {
    for (const HANDLE hEvent : {question.hAsked, question.hAnswered}) CloseHandle(hEvent);
  }
  ExpectNothingLeftBut(m_Before);
}

}  // namespace
