// What a line and its port may do to a run: hang up, never read, flood, interrupt, not be there at all.
#include <sys/stat.h>
#include <sys/time.h>

#include "gpsengine/face/guardedline.h"
#include "host/line/ports.h"
#include "tests/support/enginetest.h"
#include "tests/support/scriptedline.h"

namespace {

TEST_F(LiveEngineTest, FindsAPortAgainThatVanishedAndCameBackUnderAnotherName) {
  ASSERT_TRUE(engine.Start());
  engine.GetReceiver()->Send("$FIRST");
  EXPECT_EQ(terminal.Receive(8), "$FIRST\r\n");
  terminal.HangUp();
  EXPECT_LT(Took([this] {
              engine.GetReceiver()->Send("$LOST");
              EXPECT_FALSE(engine.Start()) << "the device has gone";
            }),
            500u);

  const PseudoTerminal other;
  MapComPort(kPort, CString::FromUtf8(other.Name()));
  ASSERT_TRUE(engine.Start());
  engine.GetReceiver()->Send("$SECOND");
  EXPECT_EQ(other.Receive(9), "$SECOND\r\n");
  other.Send(FixAt(1));
  EXPECT_TRUE(UntilRecords(1));
}

TEST_F(LiveEngineTest, IsNotHeldUpByAPeerThatNeverReads) {
  SelectHooked([done = false](Hooked& self, const CString&) mutable {
    const std::string much(100000, 'x');
    if (!std::exchange(done, true)) self.Port().Write(much.data(), static_cast<int>(much.size()));
  });
  ASSERT_TRUE(engine.Start());
  terminal.Send(FixAt(1));
  Sleep(150);  // the reader thread is in the write by now
  EXPECT_LT(Took([this] { engine.Stop(); }), 1500u);
  ASSERT_TRUE(engine.Start());
  terminal.Send(FixAt(2));
  EXPECT_TRUE(
      Until([this] { return !window.records.empty() && window.records.back().m_dTimeOfDay == 12.0; }));
}

// A driver with more room than the reader takes at once: what fills the stream in one read is lost, and
// counted.
TEST_F(EngineTest, LosesAReadThatFillsTheStreamAndReadsOn) {
  Script line(kPort);
  ASSERT_TRUE(engine.Start());
  constexpr int kRead = 1 + 16392;
  constexpr int kCount = 448;
  std::string flood;
  for (int i = 0; i < kCount; ++i) flood += FixAt(i % 50);
  line.Send(flood);
  const auto length = static_cast<int>(FixAt(0).size());
  EXPECT_TRUE(UntilRecords(kCount - kRead / length - 1));
  EXPECT_EQ(engine.GetDroppedBuffers(), 1);
  EXPECT_EQ(line.ReadersClock().msLongestWait.Get(), 100u) << "between two reads";
}

// The date is not what tells how long a line has been silent.
TEST_F(EngineTest, ForgetsOldFixesAfterASilenceAndNotWhenTheClockIsSet) {
  constexpr long long kDay = 86400;
  Script line(kPort);
  ASSERT_TRUE(engine.Start());
  TestClock& clock = line.ReadersClock();
  engine.GetReceiver()->ResetSpeedEngine();
  auto moves = [&, second = 0]() mutable {
    window.records.clear();
    Sleep(20);  // a pass looks at the clock before its read
    line.Send(FixAt(++second));
    EXPECT_TRUE(UntilRecords(1));
    Sleep(20);  // and after it
    return !window.records.empty() && window.records.back().m_bVelocityValid;
  };
  EXPECT_FALSE(moves());
  EXPECT_TRUE(moves());
  clock.secondsAhead = kDay;
  EXPECT_TRUE(moves());
  EXPECT_GE(window.records.back().m_Time.GetTime(), Clock().UnixSeconds() + kDay - 5);
  clock.secondsAhead = -kDay;
  EXPECT_TRUE(moves());
  engine.Stop();
  ASSERT_TRUE(engine.Start());
  EXPECT_TRUE(moves()) << "a new run is no silence";
  clock.msAhead = 10000;
  EXPECT_FALSE(moves()) << "ten seconds without a record";
  EXPECT_TRUE(moves());
  clock.msAhead = 30000;
  for (const int second : {20, 21}) Sleep(20), Feed(FixAt(second));
  EXPECT_TRUE(window.records.back().m_bVelocityValid) << "the host's bytes, once every ten seconds";
}

/// Signals of the host's, which come to its main thread twice a millisecond for as long as the object lives.
class Signals {
 public:
  Signals() {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);  // without SA_RESTART
    SendEvery(500);
  }
  ~Signals() { SendEvery(0); }

 private:
  static void SendEvery(int us) {
    const itimerval timer{{0, us}, {0, us}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }
};

TEST(Signal, CutsShortNeitherAReadNorAWrite) {
  const PseudoTerminal terminal;
  MapComPort(7, CString::FromUtf8(terminal.Name()));
  CSerialPort port;
  port.SetPortNumber(7);
  ASSERT_TRUE(port.Open());
  const Signals signals;
  port.SetTimeout(100);
  CString text;
  bool cancel = false;
  EXPECT_GE(Took([&] { EXPECT_FALSE(port.Read(text, cancel)); }), 99u);

  const std::string much(60000, 'x');
  std::string heard;
  std::jthread peer([&] { heard = terminal.Receive(much.size()); });
  EXPECT_TRUE(port.Write(much.data(), static_cast<int>(much.size())));
  peer.join();
  EXPECT_EQ(heard, much);
  port.Close();
}

TEST(GuardedLine, TellsAPeerThatHasGoneFromASilentOne) {
  PseudoTerminal terminal;
  char byte = 0;
  OpenSerialDevice(CString::FromUtf8(terminal.Name())).reset();
  EXPECT_FALSE(terminal.IsExclusive()) << "a line that goes leaves its device to others";
  const auto closing = OpenSerialDevice(CString::FromUtf8(terminal.Name()));
  closing->Cancel();
  EXPECT_LT(Took([&] { closing->Read(&byte, 1, 5000), closing->Read(&byte, 1, 5000); }), 5000u);
  gps::GuardedLine line(OpenSerialDevice(CString::FromUtf8(terminal.Name())), {});
  line.WakeReader();
  EXPECT_LT(Took([&] { EXPECT_EQ(line.Read(&byte, 1, 5000), 0); }), 5000u);
  EXPECT_GE(Took([&] { EXPECT_EQ(line.Read(&byte, 1, 10), 0); }), 10u) << "one read is woken";
  terminal.HangUp();
  EXPECT_LT(line.Read(&byte, 1, 1), 0);
  DCB state;
  EXPECT_FALSE(line.GetState(state) || line.SetState(state));
}

TEST_F(LiveEngineTest, SaysWhyAPortDoesNotOpenAndStartsOnOneThatDoes) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "no line");
  ASSERT_EQ(chmod((folder / "file").c_str(), 0666), 0);
  const PseudoTerminal ofAGroup;
  if (geteuid() == 0) {
    ASSERT_EQ(chown(ofAGroup.Name().c_str(), 0, 5), 0);  // any group but the superuser's own
  }
  ASSERT_EQ(chmod(ofAGroup.Name().c_str(), 060), 0);
  const PseudoTerminal ofNobody;
  ASSERT_EQ(chmod(ofNobody.Name().c_str(), 0), 0);
  const std::pair<std::string, const char*> rows[] = {
      {"/dev/no-such-port", "does not exist"},
      {"/dev", "is not a serial port"},
      {folder / "file", "is not a serial port"},
      {ofAGroup.Name(), "may not be opened by this user. It belongs to the group "},
      {ofNobody.Name(), "may not be opened by this user. An administrator"},
  };
  const uid_t user = geteuid();  // the superuser's rights, which no permission stops, are dropped
  if (user == 0 && seteuid(65534) != 0) GTEST_SKIP() << "which cannot be done here";
  for (const auto& [device, reason] : rows) {
    MapComPort(kPort, CString::FromUtf8(device));
    EXPECT_FALSE(engine.Start()) << device;
    EXPECT_EQ(engine.GetLastError(), GPS_ENGINE_INIT_FAILED) << device;
    EXPECT_TRUE(Has(host::WhyNotOpen(device), device + ' ' + reason));
  }
  ASSERT_EQ(seteuid(user), 0);
  MapComPort(kPort, CString::FromUtf8(terminal.Name()));
  ASSERT_TRUE(engine.Start());
  terminal.Send(FixAt(1));
  EXPECT_TRUE(UntilRecords(1));
}

}  // namespace
