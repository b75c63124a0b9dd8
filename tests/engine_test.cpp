// The engine with its reader thread on a live line, in real time of tens of milliseconds, and with bytes fed
// by hand.
#include "gpsengine/drivers/gsr2650lb.h"
#include "tests/support/enginetest.h"

namespace {

const std::string kGga = GgaAt("123519");
const std::string kRmc = "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\r\n";

TEST_F(EngineTest, FindsAReceiverByItsExactNameOrTheLastOne) {
  EXPECT_EQ(engine.FindReceiver("CSI - MAX")->GetName(), "CSI - MAX");
  for (const char* other : {"csi - max", ""}) EXPECT_EQ(engine.FindReceiver(other)->GetName(), "Other");
  auto* mine = new Hooked;
  EXPECT_TRUE(engine.AddReceiver(mine));
  EXPECT_EQ(engine.FindReceiver("Hooked"), mine);
  EXPECT_EQ(engine.GetReceivers()[18].get(), mine) << "before the last one";
  Hooked second;
  EXPECT_FALSE(engine.AddReceiver(&second));
}

TEST_F(EngineTest, ReportsWhyItDoesNotStart) {
  EXPECT_EQ(engine.GetLastErrorString(), "No Error.");
  engine.SetReceiver(nullptr);
  EXPECT_FALSE(engine.Start());
  EXPECT_EQ(engine.GetLastErrorString(), "No GPS Receiver Is Assigned.");
  MapComPort(kPort, "/dev/no-such-port");
  Select("Other");
  EXPECT_FALSE(engine.Start());
  EXPECT_EQ(engine.GetLastErrorString(), "Can't Initialize a Receiver.");
  engine.Stop();
  EXPECT_EQ(engine.GetLastError(), GPS_ENGINE_INIT_FAILED);
}

// No thread gets a stack of 64 TB.
TEST_F(EngineTest, SaysThatItHasNoThread) {
  CRehearsal line(kPort);
  pthread_attr_t usual, huge;
  pthread_getattr_default_np(&usual);
  pthread_attr_init(&huge);
  pthread_attr_setstacksize(&huge, std::size_t{1} << 46);
  pthread_setattr_default_np(&huge);
  EXPECT_FALSE(engine.Start());
  pthread_setattr_default_np(&usual);
  EXPECT_EQ(engine.GetLastError(), GPS_ENGINE_THREAD_FAILED);
  EXPECT_EQ(engine.GetLastErrorString(), "Can't Start GPS Thread.");
  EXPECT_FALSE(engine.IsActive());
  EXPECT_EQ(engine.GetReceiver()->GetPortHandle(), INVALID_HANDLE_VALUE);
  EXPECT_TRUE(engine.Start());
  EXPECT_EQ(engine.GetLastErrorString(), "No Error.");
}

TEST_F(EngineTest, ThrowsAStreamAwayThatGrowsWithoutAMessage) {
  EXPECT_FALSE(Feed("$,," + std::string(16391 - 3, 'x')));
  EXPECT_EQ(engine.GetDroppedBuffers(), 0);
  EXPECT_FALSE(Feed("x"));
  EXPECT_EQ(engine.GetDroppedBuffers(), 1);
  EXPECT_TRUE(Feed(kGga));
  std::string many;
  while (many.size() < 16392) many += kGga;
  EXPECT_FALSE(Feed(many)) << "whole messages go too";
  EXPECT_EQ(engine.GetDroppedBuffers(), 2);
}

TEST_F(EngineTest, ForwardsTheTextOfMessagesWhileTheHostCaptures) {
  Feed(kGga);
  EXPECT_TRUE(window.strings.empty());
  engine.m_ComBuffer.m_bPaused = false;
  Feed(kRmc + "x[COM1]" + "$PMD\r\n");
  ASSERT_EQ(window.strings.size(), 2u);
  EXPECT_EQ(window.strings[0].ToUtf8(), kRmc);
  EXPECT_EQ(engine.m_ComBuffer.m_strData.ToUtf8(), kRmc + "$PMD\r\n");
  engine.m_ComBuffer.m_strData = CString(u'x', 100000);
  Feed(kRmc);
  EXPECT_FALSE(engine.m_ComBuffer.m_bOverflow);
  engine.m_ComBuffer.m_strData = CString(u'x', 100001);
  Feed(kRmc + kRmc);
  EXPECT_EQ(window.strings.size(), 4u) << "one more, then the capture has stopped itself";
  EXPECT_TRUE(engine.m_ComBuffer.m_bOverflow);
  EXPECT_TRUE(engine.m_ComBuffer.m_bPaused);
  EXPECT_EQ(engine.m_ComBuffer.m_strData.GetLength(), 100001 + static_cast<int>(kRmc.size()));
  engine.m_ComBuffer.KeepCapturing(true);
  Feed(kRmc + kRmc);
  EXPECT_EQ(window.strings.size(), 6u);
  EXPECT_EQ(engine.m_ComBuffer.m_strData.GetLength(), 100001 + static_cast<int>(kRmc.size()));
}

TEST_F(LiveEngineTest, BringsALiveReceiversRecordsToTheWindow) {
  ASSERT_TRUE(engine.Start());
  engine.m_bGotData = false;
  terminal.Send(kGga.substr(0, 20));
  terminal.Send(kGga.substr(20) + kGga);
  ASSERT_TRUE(UntilRecords(2));
  EXPECT_DOUBLE_EQ(window.records[0].m_dLatitude, 0.8398053121698675);
  EXPECT_TRUE(Until([this] { return engine.m_bGotData.Get(); }));
  engine.SetReceiver(engine.GetReceiver());
  EXPECT_FALSE(engine.IsActive());
  terminal.Send(kGga);
  ASSERT_TRUE(engine.Resume());
  terminal.Send(FixAt(7));
  ASSERT_TRUE(UntilRecords(3));
  EXPECT_EQ(window.records[2].m_dTimeOfDay, 17.0) << "what came while the port was closed is purged";
}

// Keeps its line alive, and clears on the host's thread what it has asked for.
class Talker : public Cgsr2650lb {
 public:
  CString GetName() override { return "Talker"; }
  bool Initialize() override { return CGPSReceiver::Initialize(); }
  void KeepAlive() override { Send("ALIVE"); }
};

TEST_F(LiveEngineTest, StopsAtOnceOnASilentLineAndOnALostOne) {
  engine.AddReceiver(new Talker);
  Select("Talker");
  for (const bool lost : {false, true}) {
    ASSERT_TRUE(engine.Start());
    if (lost) terminal.HangUp();
    Sleep(lost ? 250 : 30);
    EXPECT_TRUE(engine.IsActive()) << "a lost port is a silent line";
    EXPECT_LT(Took([this] { engine.Stop(); }), 500u);
    EXPECT_TRUE(lost || terminal.Receive(1, std::chrono::milliseconds(20)).empty()) << "no keep-alive";
  }
}

TEST_F(EngineTest, SwitchesRawDataOffWhenItGoesWhileItRuns) {
  CRehearsal line(kPort);
  auto doomed = std::make_unique<CGPSEngine>();
  CGPSReceiver* const receiver = doomed->FindReceiver("Ashtech");
  receiver->SetupReceiver(kPort, 0, 0.0, "", false);
  doomed->SetReceiver(receiver);
  ASSERT_TRUE(doomed->Start());
  line.ForgetSteps();
  doomed.reset();
  EXPECT_TRUE(Has(line.Transcript(), "$PASHS,RAW,SNV,A,OFF"));
}

TEST_F(LiveEngineTest, RecordsTheBytesOfThePort) {
  const TemporaryFolder folder;
  engine.m_strRecordFile = CString::FromUtf8(folder / "record");
  engine.m_bRecordRaw = true;
  ASSERT_TRUE(engine.Start());
  terminal.Send(kGga + "\x01\xFF" + kRmc);
  ASSERT_TRUE(UntilRecords(1));
  engine.m_bRecordRaw = false;
  terminal.Send(kGga);
  ASSERT_TRUE(UntilRecords(2));
  EXPECT_EQ(ReadFile(folder / "record"), kGga + "\x01\xFF" + kRmc);
  engine.m_bRecordRaw = true;
  terminal.Send(kRmc + kGga);
  ASSERT_TRUE(UntilRecords(3));
  engine.Stop();
  EXPECT_EQ(ReadFile(folder / "record"), kRmc + kGga) << "from its beginning";
}

TEST_F(LiveEngineTest, MayBeStoppedAndCommandedFromACallback) {
  SelectHooked({}, [this](Hooked&, const CString&) { engine.Stop(); });
  ASSERT_TRUE(engine.Start());
  terminal.Send(kGga);
  ASSERT_TRUE(UntilRecords(1));
  EXPECT_TRUE(Until([this] { return !engine.IsActive(); }));
}

TEST_F(LiveEngineTest, CommandsWhileItReadsAndKeepsTheLineAlive) {
  engine.AddReceiver(new Talker);
  Select("Talker");
  ASSERT_TRUE(engine.Start());
  for (int i = 0; i < 3; ++i) {
    terminal.Send("#RTKSOURCEA,COM1,0;OMNISTAR,ANY*12\r\n");
    engine.GetReceiver()->QueryDgpsMode();
    window.Drain();
  }
  for (int i = 0; i < 4; ++i) engine.GetReceiver()->QueryDgpsMode();  // on a line that is silent for a second
  engine.Stop();
  EXPECT_GE(window.records.size(), 1u);
  const std::string sent = terminal.Receive(4000, std::chrono::milliseconds(100));
  EXPECT_NE(sent.find("ALIVE\r\n"), std::string::npos);
  for (const std::string& line : Split(sent, '\n'))
    EXPECT_TRUE(line == "ALIVE\r" || (line.starts_with("LOG COM2 ") && line.ends_with(" ONCE\r"))) << line;
}

}  // namespace
