#include "gpsengine/link/serialport.h"

#include <cerrno>

#include "gpsengine/platform/event.h"
#include "gpsengine/platform/file.h"
#include "gpsengine/platform/rehearsal.h"
#include "gpsengine/platform/trace.h"
#include "tests/support/basics.h"
#include "tests/support/pseudoterminal.h"

namespace {

class RehearsedPort : public testing::Test {
 protected:
  ~RehearsedPort() override { port.Close(); }
  void Open() {
    ASSERT_TRUE(port.Open());
    line.ForgetSteps();
  }
  /// Rate, data bits, parity and its kind, DTR, DSR flow, CTS flow, RTS, XON.
  std::vector<DWORD> Settings() {
    DCB s;
    GetCommState(port.GetHandle(), &s);
    return {s.BaudRate,     s.ByteSize,     s.fParity,     s.Parity, s.fDtrControl,
            s.fOutxDsrFlow, s.fOutxCtsFlow, s.fRtsControl, s.fOutX};
  }
  CRehearsal line;
  CSerialPort port;
  bool cancel = false;
};

TEST_F(RehearsedPort, OpensOnceAndClosesOnce) {
  EXPECT_FALSE(port.IsOpen() || port.Close() || port.SetBreak() || port.ClearBreak());
  EXPECT_TRUE(port.Open());
  EXPECT_EQ(port.GetPortName(), "COM1:");
  const HANDLE handle = port.GetHandle();
  EXPECT_TRUE(port.Open() && port.SetBreak() && port.ClearBreak());
  EXPECT_EQ(port.GetHandle(), handle);
  EXPECT_EQ(line.Transcript(), "wait 10");
  EXPECT_TRUE(port.Close());
  EXPECT_EQ(port.GetPortName(), "");
  EXPECT_FALSE(port.IsOpen());
}

TEST_F(RehearsedPort, AppliesAChangeOfSettingsAtOnce) {
  using Values = std::vector<DWORD>;
  port.SetBaudRate(9600);
  Open();
  port.SetBaudRate(0);
  EXPECT_EQ(Settings(), (Values{9600, 8, 0, 0, 1, 0, 0, 1, 0}));
  port.SetBaudRate(57600);
  EXPECT_EQ(Settings(), (Values{57600, 8, 0, 0, 1, 0, 0, 1, 0}));
  port.SetParity(2);
  EXPECT_EQ(Settings(), (Values{57600, 7, 1, 2, 1, 0, 0, 1, 0}));
  port.SetFlowControl(1 | 4);
  EXPECT_EQ(Settings(), (Values{57600, 7, 1, 2, 2, 1, 0, 1, 1}));
  DCB state;
  ASSERT_TRUE(GetCommState(port.GetHandle(), &state));
  state.fNull = state.fAbortOnError = 1, state.fBinary = 0, state.XonChar = state.XoffChar = 1;
  SetCommState(port.GetHandle(), &state);
  port.SetFlowControl(1);
  EXPECT_EQ(Settings(), (Values{57600, 7, 1, 2, 2, 1, 0, 1, 0}));
  GetCommState(port.GetHandle(), &state);
  EXPECT_FALSE(state.fNull || state.fAbortOnError || state.fBinary != 1);
  EXPECT_TRUE(state.XonLim == 128 && state.XonChar == 0x11 && state.XoffLim == 10 && state.XoffChar == 0x13);
  port.SetFlowControl(2);
  port.SetDataBits(8);
  EXPECT_EQ(Settings(), (Values{57600, 8, 1, 2, 1, 0, 1, 2, 0}));
  port.SetTimeout(3);
  EXPECT_EQ(port.GetTimeout(), 10);
}

TEST_F(RehearsedPort, WritesTextOfTwoHundredCharactersAndNoMore) {
  EXPECT_FALSE(port.Write("$JOFF\r\n"));
  Open();
  EXPECT_TRUE(port.Write(CString(u'a', 200)));
  EXPECT_FALSE(port.Write(CString(u'a', 201)));
  EXPECT_FALSE(port.Write(CString(u"\u20AC")));
  EXPECT_TRUE(port.Write(std::vector<BYTE>(200, 'b')));
  EXPECT_FALSE(port.Write(std::vector<BYTE>(201, 'b')));
  EXPECT_TRUE(port.Write('c'));
  EXPECT_TRUE(port.Write(std::string(300, 'd').data(), 300));
  EXPECT_EQ(line.Transcript(), "write \"" + std::string(200, 'a') + "\"; write \"" + std::string(200, 'b') +
                                   "\"; write \"c\"; write \"" + std::string(300, 'd') + "\"");
  line.ForgetSteps();
  EXPECT_TRUE(port.Write(CString(u"\"$JOFF\0\r\n", 8)));
  EXPECT_EQ(line.Transcript(), R"(write "\"$JOFF")") << "a text ends at its zero";
  EXPECT_FALSE(port.Write("x", -1));
  for (const int limit : {0, 3}) {
    line.LimitWrites(limit);
    EXPECT_FALSE(port.Write("$JOFF\r\n"));
  }
}

TEST_F(RehearsedPort, KeepsZeroBytesOutOfItsTexts) {
  Open();
  CString text;
  const std::string heard("AB\0CD", 5);
  line.Feed(heard);
  EXPECT_TRUE(port.Read(text, cancel));
  EXPECT_EQ(text, "AB");
  line.Feed('\0' + heard + "\r");
  EXPECT_TRUE(port.ReadUntilAny(text, cancel, "\r"));
  EXPECT_EQ(text, "ABCD\r");
}

TEST_F(RehearsedPort, LetsATraceHandlerTraceAndAskForItsName) {
  if (!kTraceBuilt) GTEST_SKIP() << "a release build traces nothing";
  std::string heard;
  SetTraceHandler([&](const CString& text) {
    Trace("a text of the handler's own");
    heard += text.ToUtf8() + port.GetPortName().ToUtf8() + ' ';
  });
  port.Open();
  const HANDLE handle = port.GetHandle();
  CloseHandle(handle);
  SetLastError(ENOSPC);
  EXPECT_FALSE(port.Close());
  SetTraceHandler({});
  EXPECT_EQ(heard,
            "Opening COM1...COM1: Port COM1: opened!\nCOM1: Unable to close COM1:. Bad file descriptor\n ");
}

TEST_F(RehearsedPort, CountsNoBytesWhileTheLineHasAnError) {
  EXPECT_EQ(port.GetBytesAvailable(), 0);
  Open();
  line.Feed("12345");
  EXPECT_EQ(port.GetBytesAvailable(), 5);
  line.SetLineErrors(8);
  EXPECT_EQ(port.GetBytesAvailable(), 0);
  EXPECT_EQ(port.GetBytesAvailable(), 5);
  line.Feed("late", 10);
  Sleep(20);
  EXPECT_TRUE(port.PurgeInput());
  EXPECT_EQ(port.GetBytesAvailable(), 0);
}

TEST_F(RehearsedPort, ReadsWhatHasComeWithinTheTimeout) {
  CString text;
  EXPECT_FALSE(port.Read(text, cancel)) << "closed";
  Open();
  EXPECT_EQ(Took([&] { EXPECT_FALSE(port.Read(text, cancel)); }), 1000u);
  line.Feed("x", 900);
  EXPECT_LT(Took([&] { EXPECT_TRUE(port.Read(text, cancel)); }), 1000u) << "and no wait for more";
  EXPECT_EQ(text, "x");
  std::vector<BYTE> bytes;
  line.Feed("ab");
  EXPECT_TRUE(port.ReadBytes(bytes, cancel));
  EXPECT_EQ(bytes, (std::vector<BYTE>{'a', 'b'}));
  cancel = true;
  line.Feed("x");
  EXPECT_FALSE(port.Read(text, cancel));
}

TEST_F(RehearsedPort, ReadsABlockAndWaitsForAByte) {
  Open();
  char data[200] = {};
  int count = -1;
  EXPECT_TRUE(port.ReadBlock(data, 0, &count, cancel));
  EXPECT_EQ(count, 0);
  line.Feed("abc");
  line.Feed("defghijk", 400);
  EXPECT_TRUE(port.ReadBlock(data, 8, &count, cancel));
  EXPECT_EQ(std::string(data, static_cast<std::size_t>(count)), "abcdefgh");
  line.Feed(">d", 50);
  EXPECT_TRUE(port.WaitForByte('>', 100));
  EXPECT_FALSE(port.WaitForByte('>', 100)) << "what came before is gone";
  EXPECT_EQ(Took([&] { EXPECT_FALSE(port.ReadBlock(data, 8, &count, cancel)); }), 1010u);
  // For the rest of its time, or until the line has paused for a second.
  for (const auto& [most, took] : {std::pair(8, 1070u), {200, 1500u}}) {
    line.Feed("a");
    line.Feed("b", 500);
    EXPECT_EQ(Took([&, most = most] { EXPECT_TRUE(port.ReadBlock(data, most, &count, cancel)); }), took);
  }
  cancel = true;
  EXPECT_FALSE(port.ReadBlock(data, 8, &count, cancel));
}

TEST_F(RehearsedPort, GivesTheFirstByteOfALineThatKeepsTalking) {
  Open();
  EXPECT_EQ(port.ReadFirstByte(0, 50), 0);
  line.Feed("\xFFrest");
  EXPECT_LT(Took([&] { EXPECT_EQ(port.ReadFirstByte(0, 50), -1); }), 50u);
  port.PurgeInput();
  line.Feed("k", 40);
  line.Feed("x", 60);
  EXPECT_LT(Took([&] { EXPECT_EQ(port.ReadFirstByte('!', 50), 'k'); }), 130u);
  // A byte every 40 ms extends a wait of 50 ms, but not for ever.
  for (DWORD ms = 0; ms < 20000; ms += 40) line.Feed("k", ms);
  EXPECT_EQ(Took([&] { EXPECT_EQ(port.ReadFirstByte('!', 50), 'k'); }) / 100, 100u) << "ten seconds";
}

TEST_F(RehearsedPort, ReadsUntilATerminator) {
  Open();
  CString text;
  line.Feed("OK", 500);
  line.Feed("!\r", 800);
  EXPECT_TRUE(port.ReadUntilAny(text, cancel, "\r\n"));
  EXPECT_EQ(text, "OK!\r");
  line.Feed("never ends");
  EXPECT_EQ(Took([&] { EXPECT_FALSE(port.ReadUntilAny(text, cancel, "\r\n")); }) / 100, 11u) << "and 100 ms";
  EXPECT_EQ(text, "never ends");
  for (const bool stop : {false, true})
    EXPECT_TRUE(!port.ReadReply(text, cancel = stop, "\r\n", "$>JI", "") && text.IsEmpty());
}

TEST_F(RehearsedPort, FindsAReplyAmongOtherSentences) {
  Open();
  constexpr std::tuple<const char*, const char*, const char*, bool> rows[] = {
      {"$GPGGA,1\r\n$>JI,", "12,3\r\n", "$>JI", true},
      {"$>JE,no end", "", "$>JI", true},
      {"$GPGGA,1\r\n", "", "$>JI", false},
      {"x\r", "", "", true}};
  for (const auto& [heard, then, pattern, found] : rows) {
    line.Feed(heard, 20);
    line.Feed(then, 200);
    CString text;
    bool is_there = false;
    const auto took =
        Took([&, wanted = pattern] { is_there = port.ReadReply(text, cancel, "\r\n", wanted, "$>JE"); });
    EXPECT_EQ(is_there, found) << heard;
    EXPECT_EQ(took < 300, *then != '\0' || *pattern == '\0')
        << heard << ", and no wait for more than all of it: " << took;
    EXPECT_LT(took, 1600u) << "a pause of the line is no wait of its own";
    EXPECT_EQ(text.ToUtf8(), std::string(heard) + then);
  }
}

// The same class on a terminal device of the kernel.
class TerminalPort : public testing::Test {
 protected:
  TerminalPort() {
    MapComPort(7, CString::FromUtf8(terminal.Name()));
    port.SetPortNumber(7);
  }
  ~TerminalPort() override { port.Close(); }
  PseudoTerminal terminal;
  CSerialPort port;
  bool cancel = false;
};

TEST_F(TerminalPort, TalksBothWaysByteForByte) {
  ASSERT_TRUE(port.Open());
  std::string all(256, '\0');
  for (int i = 0; i < 256; ++i) all[static_cast<std::size_t>(i)] = static_cast<char>(i);
  EXPECT_TRUE(port.Write(all.data(), 256));
  EXPECT_TRUE(port.Write('!'));
  EXPECT_TRUE(port.Write("", 0));
  EXPECT_FALSE(port.Write("", -1));
  EXPECT_EQ(terminal.Receive(257), all + '!');
  terminal.Send(all);
  EXPECT_TRUE(Soon([this] { return port.GetBytesAvailable() == 256; }));
  char got[256] = {};
  int count = 0;
  EXPECT_TRUE(port.ReadBlock(got, 256, &count, cancel));
  EXPECT_EQ(std::string(got, static_cast<std::size_t>(count)), all);
  terminal.Send("two");
  for (const int most : {1, 2}) EXPECT_TRUE(port.ReadBlock(got, most, &count, cancel) && count == most);
}

TEST_F(TerminalPort, SetsAnyBaudRateTheLineTakes) {
  ASSERT_TRUE(port.Open());
  EXPECT_TRUE(port.PurgeInput());
  DCB state;
  GetCommState(port.GetHandle(), &state);
  EXPECT_EQ(state.StopBits, 0);
  for (const int rate : {4800, 123456, 38400}) {
    port.SetBaudRate(rate);
    port.SetStopBits(2);
    ASSERT_TRUE(GetCommState(port.GetHandle(), &state));
    EXPECT_EQ(state.BaudRate, static_cast<DWORD>(rate));
    EXPECT_TRUE(SetCommState(port.GetHandle(), &state));
    EXPECT_EQ(state.ByteSize, 8);
    EXPECT_EQ(state.StopBits, 2);
    if (rate == 123456) port.SetParity(2);  // which a pseudo-terminal refuses: the speed holds all the same
  }
}

TEST_F(TerminalPort, StopsAndGoesOnAtTheCharactersOfTheStandard) {
  port.SetFlowControl(4);
  ASSERT_TRUE(port.Open());
  termios state;
  tcgetattr(terminal.Keeper(), &state);
  state.c_cc[VSTART] = state.c_cc[VSTOP] = 1;
  state.c_iflag |= ICRNL | ISTRIP;  // as a terminal's
  state.c_oflag |= OPOST;
  state.c_lflag |= ICANON | ECHO;
  tcsetattr(terminal.Keeper(), TCSANOW, &state);
  port.SetBaudRate(4800);
  tcgetattr(terminal.Keeper(), &state);
  EXPECT_TRUE(state.c_cc[VSTART] == 0x11 && state.c_cc[VSTOP] == 0x13);
  EXPECT_EQ(state.c_iflag, static_cast<tcflag_t>(IGNBRK | IXON | IXOFF));
  EXPECT_EQ(state.c_oflag | state.c_lflag, 0u);
  EXPECT_EQ(state.c_cflag & CRTSCTS, 0u);
  port.SetFlowControl(2);
  port.SetBaudRate(4800);
  tcgetattr(terminal.Keeper(), &state);
  EXPECT_NE(state.c_cflag & CRTSCTS, 0u);
  EXPECT_EQ(state.c_iflag, static_cast<tcflag_t>(IGNBRK));
}

TEST_F(TerminalPort, IsForOneProgramAlone) {
  ASSERT_TRUE(port.Open());
  CSerialPort second;
  second.SetPortNumber(7);
  EXPECT_FALSE(second.Open());
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(EBUSY));
  EXPECT_EQ(second.GetPortName(), "COM7:");
  port.Close();
  EXPECT_TRUE(second.Open());
  second.Close();
  MapComPort(0, CString::FromUtf8(terminal.Name()));
  second.SetPortNumber(0);
  EXPECT_FALSE(second.Open()) << "numbers begin at 1";
  MapComPort(0, "");
}

/// Time that passes only while a line is waited for, and what the peer does meanwhile.
class PeerClock : public Clock {
 public:
  PeerClock(DWORD nPace, std::function<void()> peer) : m_nPace(nPace), m_Peer(std::move(peer)) {
    SetClock(this);
  }
  ~PeerClock() override { SetClock(nullptr); }
  std::uint64_t Milliseconds() override { return m_nNow; }
  bool Wait(WaitKind, DWORD ms, const std::function<bool(DWORD)>& block) override {
    if (block(0)) return true;
    m_nNow += std::min(ms, m_nPace);
    m_Peer();
    // In short pieces: a pseudo-terminal may become writable without waking who waits for that.
    for (DWORD waited = 0; ms > m_nPace && waited < ms; ++waited) {
      if (block(1)) return true;
    }
    return block(0);
  }

 private:
  const DWORD m_nPace;
  const std::function<void()> m_Peer;
  std::uint64_t m_nNow = 1000;
};

TEST_F(TerminalPort, WritesAsLongAsThePeerTakesBytesAndGivesUpWhenItTakesNone) {
  ASSERT_TRUE(port.Open());
  const std::string much(65535, 'x');
  std::size_t taken = 0;
  {
    PeerClock slow(1500, [&] { taken += terminal.Receive(1024).size(); });
    EXPECT_TRUE(port.Write(much.data(), static_cast<int>(much.size())));
    EXPECT_GT(slow.Milliseconds(), 4 * kWriteLimit);
  }
  EXPECT_EQ(terminal.Receive(much.size() - taken).size(), much.size() - taken);

  PeerClock dead(INFINITE, [] {});
  EXPECT_FALSE(port.Write(much.data(), static_cast<int>(much.size())));
  EXPECT_GE(dead.Milliseconds(), 1000 + kWriteLimit);
  EXPECT_LE(dead.Milliseconds(), 1000 + 3 * kWriteLimit);  // the kernel may take a little more at the end
}

/// Holds its thread inside a wait for the line until it is told to go on.
class HeldClock : public Clock {
 public:
  bool Wait(WaitKind kind, DWORD ms, const std::function<bool(DWORD)>& block) override {
    if (kind != WaitKind::line) return block(ms);
    SetEvent(m_hHeld);
    WaitForSingleObject(m_hGoOn, INFINITE);
    return false;
  }
  const HANDLE m_hHeld = CreateEventW(false, false), m_hGoOn = CreateEventW(false, false);
};

TEST_F(TerminalPort, KeepsADeviceToItselfWhenAThreadLeavesAnEarlierLineOfItLate) {
  HeldClock clock;
  ASSERT_TRUE(port.Open());
  std::jthread late([&clock, hPort = port.GetHandle()] {
    SetClock(&clock);
    DWORD written = 0;
    WriteFile(hPort, "x", 1, &written);
    SetClock(nullptr);
  });
  WaitForSingleObject(clock.m_hHeld, INFINITE);
  port.Close();
  EXPECT_FALSE(terminal.IsExclusive());
  ASSERT_TRUE(port.Open());
  EXPECT_TRUE(terminal.IsExclusive());
  SetEvent(clock.m_hGoOn);
  late.join();
  EXPECT_TRUE(terminal.IsExclusive());
}

TEST_F(TerminalPort, ReleasesABlockedWriteAtAHangUp) {
  ASSERT_TRUE(port.Open());
  const std::jthread plug([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    terminal.HangUp();
  });
  const std::string much(100000, 'x');
  EXPECT_LT(Took([&] { EXPECT_FALSE(port.Write(much.data(), static_cast<int>(much.size()))); }),
            kWriteLimit / 2);
}

TEST_F(TerminalPort, ReleasesABlockedReadWhenItIsClosed) {
  ASSERT_TRUE(port.Open());
  port.SetTimeout(10000);
  const std::jthread closer([this] {
    Sleep(30);
    port.Close();
  });
  CString text;
  EXPECT_LT(Took([&] { EXPECT_FALSE(port.Read(text, cancel)); }), 5000u);
}

TEST(ComPort, OfAnyNumberAboveZeroStandsForADeviceOfTheSystemUntilItIsMapped) {
  for (const int number : {0, -1, 10000, 7}) {
    const CRehearsal line(number, number != 7);
    CSerialPort port;
    port.SetPortNumber(number);
    SetLastError(0);
    EXPECT_EQ(port.Open(), number == 10000) << number;
    port.Close();
  }
  EXPECT_EQ(GetLastError(), DWORD{ENODEV});
  EXPECT_EQ(GetComPortDevice(41), "/dev/ttyS40");
  MapComPort(41, "/dev/ttyUSB0");
  EXPECT_EQ(GetComPortDevice(41), "/dev/ttyUSB0");
  EXPECT_EQ(GetComPortDevice(0), "");
}

}  // namespace
