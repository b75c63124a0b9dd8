// Hosts that misbehave: no window, one that goes away, one that is never drained, callbacks that call back,
// settings that change in mid-run.
#include "tests/support/enginetest.h"
#include "tests/support/wirebuilder.h"

namespace {

std::string OneOfEach() {
  std::string all = FixAt(1) + Snv().Message() + '\n';
  for (int prn = 1; prn <= 4; ++prn) all += Mbn{.prn = prn, .toFollow = 4 - prn}.Message() + '\n';
  return all + Pbn().Message() + '\n' + "$BIN_" + std::string(135, '\0') + '\n';
}

// Has the function called with every ephemeris, for as long as it lives.
void OnEphemeris(CGPSReceiver& receiver, std::function<void()>& call) {
  const auto callBack = [](GPSNotificationType, CGPSNotification*, void* pUser) {
    (*static_cast<std::function<void()>*>(pUser))();
  };
  receiver.AddNotificationCallback(GPS_NOTIFY_EPHEMERIS, callBack, &call);
}

TEST_F(EngineTest, FreesWhatNoWindowTakes) {
  engine.m_bAttachRawData = true;
  engine.m_ComBuffer.m_bPaused = false;
  {
    HostWindow shortLived;
    app.SetMainWnd(&shortLived);
    CBinBuffer bytes(CString(OneOfEach().data(), static_cast<int>(OneOfEach().size())));
    EXPECT_TRUE(engine.UpdateGPSBuffer(bytes));
  }  // with its messages waiting
  EXPECT_TRUE(Feed(OneOfEach())) << "into a window that has gone";
  app.SetMainWnd(nullptr);
  EXPECT_TRUE(Feed(OneOfEach()));
  EXPECT_TRUE(window.records.empty() && window.epochs.empty() && window.strings.empty());
  app.SetMainWnd(&window);
  EXPECT_TRUE(Feed(OneOfEach()));
  EXPECT_EQ(window.records.size(), 6u);  // of the fix, the ephemeris and each measurement
  EXPECT_EQ(window.epochs.size(), 1u);
  EXPECT_EQ(window.ephemerides.size(), 1u);
  EXPECT_EQ(window.strings.size(), 8u);
  EXPECT_EQ(window.blocks, 1);
}

TEST(Engine, WorksWithoutAnApplication) {
  CGPSEngine engine;
  engine.SetReceiver(engine.FindReceiver("SiRF"));
  engine.InitReceivers();
  EXPECT_EQ(engine.GetReceiver()->GetCurrentBaudrate(), 4800);
  CBinBuffer bytes(CString(FixAt(1).c_str()));
  EXPECT_TRUE(engine.UpdateGPSBuffer(bytes));
}

TEST_F(EngineTest, LosesTheNewestOfWhatAHostDoesNotDrainAndGoesOn) {
  const auto lost = GetLostMessages();
  for (int i = 0; i < kMaxPostedMessages + 7; ++i) {
    CBinBuffer bytes(CString(FixAt(i).c_str()));
    ASSERT_TRUE(engine.UpdateGPSBuffer(bytes));
  }
  EXPECT_EQ(GetLostMessages() - lost, 7u);
  window.Drain();
  EXPECT_EQ(window.records.size(), static_cast<std::size_t>(kMaxPostedMessages));
  EXPECT_TRUE(Feed(FixAt(1)));
  EXPECT_EQ(window.records.back().m_dTimeOfDay, 11.0);
}

TEST_F(EngineTest, LetsACallbackCallBack) {
  engine.m_bAttachRawData = true;
  int calls = 0;
  std::function<void()> callBack = [&] {
    CGPSReceiver& receiver = *engine.GetReceiver();
    ++calls;
    CString fix(FixAt(5).c_str());
    EXPECT_TRUE(receiver.Parse(fix));
    CBinBuffer more(fix);
    EXPECT_FALSE(engine.UpdateGPSBuffer(more)) << "the stream is being taken apart";
    receiver.ResetSpeedEngine();
    receiver.InvalidateSVInfo();
    CWordArray words;
    receiver.GetBinWords(words);
    receiver.Send("$COMMAND");
    receiver.AddNotificationCallback(GPS_NOTIFY_EPHEMERIS, nullptr, nullptr);
  };
  OnEphemeris(*engine.GetReceiver(), callBack);
  EXPECT_TRUE(Feed(Snv().Message() + "\n" + FixAt(6)));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(window.ephemerides.size(), 1u);
  ASSERT_GE(window.records.size(), 2u);
  EXPECT_EQ(window.records.back().m_dTimeOfDay, 16.0) << "the stream went on";
  Feed(Snv().Message() + "\n");
  EXPECT_EQ(calls, 1) << "it has taken itself out";
}

TEST_F(EngineTest, LetsACallbackTakeTheReceiverAway) {
  engine.m_bAttachRawData = true;
  std::function<void()> takeAway = [this] { engine.SetReceiver(nullptr); };
  OnEphemeris(*engine.GetReceiver(), takeAway);
  EXPECT_TRUE(Feed(Snv().Message() + "\n" + FixAt(1)));
  EXPECT_FALSE(Feed(FixAt(2)));
  EXPECT_EQ(window.records.size(), 1u) << "that of the ephemeris";
}

// A host that moves the bytes itself, beside a reader thread that has none to read.
class FedRunTest : public EngineTest {
 protected:
  FedRunTest() {
    engine.m_bAttachRawData = true;
    engine.GetReceiver()->SetupReceiver(kPort, 0, 0.0, "", true);
  }
};

TEST_F(FedRunTest, KeepsWhatIsFedRightAfterAStart) {
  for (int round = 0; round < 100; ++round) {
    ASSERT_TRUE(engine.Start());
    Feed(FixAt(round).substr(0, 20));
    EXPECT_TRUE(Feed(FixAt(round).substr(20))) << round;
    Feed("$GPGGA,half a sentence");
    engine.Stop();
    Feed(FixAt(round).substr(20));
    EXPECT_EQ(window.records.size(), static_cast<std::size_t>(round) + 1) << "its head went with its run";
  }
}

TEST_F(FedRunTest, EndsAtOnceWhenACallbackStopsIt) {
  std::function<void()> startOver = [this] {
    EXPECT_LT(Took([this] { EXPECT_TRUE(engine.Start()); }), 500u);
  };
  ASSERT_TRUE(engine.Start());
  OnEphemeris(*engine.GetReceiver(), startOver);
  EXPECT_FALSE(Feed(FixAt(1) + Snv().Message() + "\n" + FixAt(2) + "$GPGGA,half a"));
  EXPECT_EQ(window.records.size(), 1u) << "what stood after the message went with its run";
  EXPECT_TRUE(window.ephemerides.empty());
  EXPECT_TRUE(engine.IsActive());
  EXPECT_TRUE(Feed(FixAt(3)));
  SelectHooked({}, [this](Hooked&, const CString&) { engine.Stop(); });
  engine.GetReceiver()->SetupReceiver(kPort, 0, 0.0, "", true);
  ASSERT_TRUE(engine.Start());
  EXPECT_FALSE(Feed(FixAt(4) + FixAt(5)));
  EXPECT_EQ(window.records.size(), 3u) << "the one that was being decoded";
}

struct Mortal : Hooked {
  explicit Mortal(bool& bGone) : m_bGone(bGone) {}
  ~Mortal() override { m_bGone = true; }
  bool& m_bGone;
};

TEST_F(FedRunTest, SurvivesACallbackThatDestroysTheEngine) {
  static bool gone;  // outlives a receiver that is kept for its callback to return into
  for (const bool destroys : {true, false}) {
    gone = false;
    auto doomed = std::make_unique<CGPSEngine>();
    auto* const receiver = new Mortal(gone);
    EXPECT_TRUE(doomed->AddReceiver(receiver));
    receiver->SetupReceiver(kPort, 0, 0.0, "", true);
    doomed->SetReceiver(receiver);
    doomed->m_bAttachRawData = true;
    std::function<void()> destroy = [&] { doomed.reset(); };
    if (destroys) OnEphemeris(*receiver, destroy);
    const std::string sent = Snv().Message() + "\n" + FixAt(1);
    CBinBuffer bytes(sent.data(), static_cast<int>(sent.size()));
    EXPECT_NE(doomed->UpdateGPSBuffer(bytes), destroys);
    window.Drain();
    EXPECT_EQ(window.records.empty(), destroys);
    doomed.reset();
    EXPECT_NE(gone, destroys);
  }
}

TEST_F(EngineTest, GoesOnBehindAnExceptionOfTheHosts) {
  SelectHooked([](Hooked&, const CString& message) {
    if (message.Find("000011") >= 0) throw std::runtime_error("the host's");
  });
  EXPECT_THROW(Feed(FixAt(0) + FixAt(1) + FixAt(2)), std::runtime_error);
  EXPECT_TRUE(Feed(FixAt(3)));
  ASSERT_EQ(window.records.size(), 3u);
  EXPECT_EQ(window.records[1].m_dTimeOfDay, 12.0) << "the next sentence was lost";
}

TEST_F(LiveEngineTest, TakesSettingsInMidRunAsFarAsTheyConcernIt) {
  ASSERT_TRUE(engine.Start());
  engine.m_bEmulation = true;
  engine.m_strEmulationFile = "/nowhere/at/all";
  engine.GetReceiver()->SetupReceiver(kPort + 1, 1, 2.0, "", false);
  terminal.Send(FixAt(1));
  ASSERT_TRUE(UntilRecords(1));
  EXPECT_DOUBLE_EQ(window.records[0].m_dAltitude, 545.4 + 46.9 - 2.0) << "heights from the next fix on";
  engine.m_bAttachRawData = true;
  terminal.Send(Snv().Message() + "\n");
  EXPECT_TRUE(Until([this] { return !window.ephemerides.empty(); }));
  EXPECT_TRUE(engine.IsActive()) << "what to play is for the next run";
  EXPECT_TRUE(boxes.empty());
}

TEST_F(EngineTest, DecodesNoBytesOfAnEarlierMessage) {
  engine.m_bAttachRawData = true;
  EXPECT_TRUE(Feed(Snv().Message() + "\n"));
  engine.m_bAttachRawData = false;
  EXPECT_FALSE(Feed(Snv().Message() + "\n"));
  EXPECT_EQ(window.ephemerides.size(), 1u);
}

TEST_F(LiveEngineTest, LeavesNothingToTheNextEngine) {
  const std::string satellites = "$PASHR,SAT,01,07,112,36,47,U*00\r\n";
  const auto select = [](CGPSEngine& selecting) {
    selecting.SetReceiver(selecting.FindReceiver("Other"));
    selecting.GetReceiver()->SetupReceiver(kPort, 0, 0.0, "", false);
  };
  {
    CGPSEngine first;
    select(first);
    ASSERT_TRUE(first.Start());
    // From here on its own reports of satellites would be passed over.
    terminal.Send(WithChecksum("$GPGSA,A,3,07,,,,,,,,,,,,2.5,1.3,2.1") +
                  WithChecksum("$GPGSV,1,1,01,07,45,180,41") + satellites + FixAt(1) + "$GPGGA,half a sent");
    ASSERT_TRUE(UntilRecords(2));
    EXPECT_FALSE(engine.IsActive());
  }
  CGPSEngine second;
  select(second);
  window.records.clear();
  ASSERT_TRUE(second.Start());
  EXPECT_EQ(second.GetReceiver()->GetSentencesRecognised(), 0);
  terminal.Send(satellites + FixAt(2));
  ASSERT_TRUE(UntilRecords(2));
  EXPECT_FALSE(window.records[0].m_bPositionValid) << "the report was taken";
  EXPECT_EQ(window.records[1].m_dTimeOfDay, 12.0);
  second.Stop();
}

}  // namespace
