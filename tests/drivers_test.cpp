// What the drivers do beyond their command sets: limits, failures, acknowledgements, what they keep.
#include "gpsengine/drivers/ashtech.h"
#include "gpsengine/drivers/gsr2650lb.h"
#include "gpsengine/drivers/sirf.h"
#include "gpsengine/drivers/sokkiaaxis3.h"
#include "gpsengine/drivers/starlink.h"
#include "tests/support/receivertest.h"

using namespace std::string_literals;

namespace {

template <class Receiver>
class DriverTest : public ReceiverTest<Receiver> {
 protected:
  // What an operation does, as in
  //     write "$JSAVE\r\n"; wait 2000
  // One with a result ends in "result true" or "result false".
  template <class Operation>
  std::string Steps(Operation operation) {
    this->line.ForgetSteps();
    std::string result;
    if constexpr (std::same_as<std::invoke_result_t<Operation, Receiver&>, bool>)
      result = std::invoke(operation, this->receiver) ? "result true" : "result false";
    else
      std::invoke(operation, this->receiver);
    const std::string steps = this->line.Transcript();
    return steps.empty() || result.empty() ? steps + result : steps + "; " + result;
  }

  void Close() {
    this->receiver.Suspend();
    this->line.ForgetSteps();
  }

  // From now on the port is closed and does not open.
  void Unplug() {
    MapComPort(kNoPort, [] { return std::unique_ptr<SerialLine>(); });
    this->receiver.SetupReceiver(kNoPort, 0, 0.0, "", false);
    Close();
  }

  void Acknowledge(std::function<bool(int nWait)> answers = [](int) { return true; }) {
    m_nWaits = 0;
    this->line.SetStepHandler([this, answers](const CRehearsal::Step& step) {
      if (step.kind == CRehearsal::StepKind::waitForMessage && answers(++m_nWaits))
        this->Feed("$PASHR,ACK\r\n");
    });
  }

 private:
  static constexpr int kNoPort = 99;
  int m_nWaits = 0;
};

class AcknowledgedReceiver : public COtherGps {
 public:
  using CGPSReceiver::Write;
  using CGPSReceiver::WriteAck;
};

using OtherDriver = DriverTest<AcknowledgedReceiver>;
using AshtechDriver = DriverTest<CAshtech>;
using CsiDriver = DriverTest<CCSI>;
using SirfDriver = DriverTest<CSirf>;
using LeicaDriver = DriverTest<CLeica>;
using StarlinkDriver = DriverTest<CStarlink>;
using GsrDriver = DriverTest<Cgsr2650lb>;

constexpr auto kMotion = "$GPVTG,84.4,T,,M,22.4,N,41.5,K";
const auto reset = [](auto& r) { return r.ResetAll(false); };
const auto resetWithAck = [](auto& r) { return r.ResetAll(true); };
const auto start = [](auto& r) { return r.Initialize(); };
auto Raw(bool bOn) {
  return [bOn](auto& r) { return r.EnablePostProcessing(bOn); };
}
auto Interval(double dSeconds) {
  return [dSeconds](auto& r) { return r.SetRawDataOutputInterval(dSeconds); };
}

}  // namespace

TEST(CommandLine, HasItsEndItsLengthAndTheRightChecksum) {
  const auto ofLength = [](std::size_t n) { return std::string(n - 2, 'A') + "\r\n"; };
  for (const std::string& line :
       {"$JSAVE\r\n"s, "datum user\r\n"s, "$PSRF103,00,00,02,01*26\r\n"s, ofLength(200)})
    EXPECT_TRUE(CGPSCommand::IsLine(line)) << line;
  for (const std::string& line :
       {""s, "$JSAVE"s, "$JSAVE\n"s, "$JSAVE\r\n\r\n"s, "$J\tSAVE\r\n"s, ofLength(201),
        "$PSRF103,00,00,02,01*27\r\n"s, "$PSRF103,00,00,02,01*2\r\n"s, "$PSRF103,00,00,02,01*26 \r\n"s})
    EXPECT_FALSE(CGPSCommand::IsLine(line)) << line;
}

TEST_F(OtherDriver, SendsALineOrBytesOfTheHosts) {
  const unsigned char bytes[] = {0xA0, 0xA2, 0x00, 0xFF};
  const auto send = [](const CString& text) { return [text](auto& r) { r.Send(text); }; };
  const auto sendBytes = [&](auto& r) { return r.SendBinary(bytes, 4); };
  EXPECT_EQ(Steps(send("$JSAVE")), R"(write "$JSAVE\r\n")");
  EXPECT_EQ(Steps(send("")), R"(write "\r\n")");
  EXPECT_EQ(Steps(send(CString(u'A', 199))), "") << "with its line end one too many";
  EXPECT_EQ(Steps(sendBytes), "write-hex A0A200FF; result true");
  EXPECT_FALSE(receiver.SendBinary(bytes, 0) || receiver.SendBinary(nullptr, 4));
  line.LimitWrites(2);
  EXPECT_EQ(Steps(sendBytes), "write-hex A0A2; result false");
  EXPECT_EQ(Steps(send("$JSAVE")), R"(write "$J")") << "of which nobody hears";
  Close();
  EXPECT_EQ(Steps(sendBytes) + Steps(Raw(true)), "result falseresult false");
}

TEST_F(OtherDriver, WaitsForTheAcknowledgementOrForItsTime) {
  const auto write = [](bool bWait) {
    return [bWait](auto& r) { return r.WriteAck("$PASHS,SAV,Y\r\n", bWait, 700); };
  };
  EXPECT_EQ(Steps(write(false)), R"(write "$PASHS,SAV,Y\r\n"; wait 700; result true)");
  EXPECT_EQ(
      Took([&] { EXPECT_EQ(Steps(write(true)), R"(write "$PASHS,SAV,Y\r\n"; wait-ack 700; result false)"); }),
      700u);
  EXPECT_EQ(Steps([](auto& r) { return r.WriteAck(CString(u'A', 201), false, 700); }), "result false");
  line.StopAfter(0);
  EXPECT_EQ(Steps(write(false)), "result false");
  Close();
  EXPECT_EQ(Steps(write(false)) + Steps(write(true)), "result falseresult false");
  EXPECT_EQ(Steps([](auto& r) { return r.Write("$JSAVE\r\n", 200); }), "result false");
  EXPECT_EQ(Steps([](auto&) { Sleep(0), Sleep(1); }), "wait 1");
}

TEST_F(OtherDriver, HasItsWaitArmedForTheQuickestAnswer) {
  line.SetStepHandler([this](const CRehearsal::Step& step) {
    if (step.kind == CRehearsal::StepKind::write) Feed("$PASHR,ACK\r\n");
  });
  EXPECT_EQ(Steps([](auto& r) { return r.WriteAck("$PASHS,SAV,Y\r\n", true, 700); }),
            R"(write "$PASHS,SAV,Y\r\n"; result true)");
  EXPECT_TRUE(Last().m_Status.m_bAck) << "the host hears of it as well";
}

TEST_F(AshtechDriver, TakesRawIntervalsFromAQuarterOfASecondOn) {
  EXPECT_EQ(Steps(Interval(0.25)), R"(write "$PASHS,RCI,0.250000\r\n"; wait 200; result true)");
  EXPECT_EQ(Steps(Interval(0.2)), "result false");
  line.LimitWrites(5);
  EXPECT_EQ(Steps(Raw(true)), R"(write "$PASH"; result false)") << "the first line did not go out";
  EXPECT_EQ(Steps(Interval(2.0)), R"(write "$PASH"; wait 200; result true)");
  Close();
  EXPECT_EQ(Steps(Interval(0.25)) + Steps(Raw(true)), "result trueresult false");
}

TEST_F(CsiDriver, GoesOnWithAResetThatIsNotAcknowledgedAndSaysSo) {
  const std::string refused = Steps(resetWithAck);
  EXPECT_TRUE(refused.starts_with(R"(write "$PASHS,RST\r\n"; wait-ack 10000; wait 3000)")) << refused;
  EXPECT_TRUE(refused.ends_with(R"(write "$PASHS,SAV,Y\r\n"; wait-ack 1000; result false)")) << refused;
  Acknowledge([](int nWait) { return nWait != 4; });
  EXPECT_EQ(Steps(resetWithAck), refused);
  Acknowledge();
  EXPECT_EQ(Steps(resetWithAck), refused.substr(0, refused.size() - 5) + "true");
}

TEST_F(CsiDriver, OpensThePortForAResetAndFailsIfItCannot) {
  EXPECT_EQ(Steps(&CCSI::QueryPAR), R"(write "$PASHQ,PAR\r\n"; wait 500)");
  const std::string whole = Steps(reset);
  EXPECT_TRUE(whole.ends_with("result true")) << whole;
  Close();
  EXPECT_TRUE(Steps(reset).ends_with(whole));
  Unplug();
  EXPECT_EQ(Steps(reset), "result false");
  // With the port in the host's hands there is nothing to open, and nothing is open.
  receiver.SetupReceiver(1, 0, 0.0, "", true);
  EXPECT_EQ(Steps(reset), "result false");
}

// The message has 16 bits for the rate, so that the highest bit of 115200 does not fit.
TEST_F(SirfDriver, NamesItsBaudRateInBothDirections) {
  app.SetProfilePath("/proc/nowhere/host.ini");  // where nothing is kept
  receiver.SaveDifferentSettings(115200);
  const std::string steps = Steps([](auto& r) { r.SetDgpsMode(DGPS_MODE_NONE); });
  EXPECT_NE(steps.find(R"(write "$PSRF100,0,115200,8,1,0*04\r\n"; wait 3000)"), std::string::npos) << steps;
  EXPECT_NE(steps.find("C2000145B0B3"), std::string::npos) << steps;
  EXPECT_TRUE(Steps(resetWithAck).ends_with("result true"));
  Unplug();
  EXPECT_EQ(Steps(resetWithAck), "result false");
}

TEST(Sirf, HasAChecksumOf15BitsInAFrameAndOfWhatStandsBehindTheDollarSignInALine) {
  struct Sirf : CSirf {
    using CSirf::CheckSum;
  } sirf;
  std::vector<unsigned char> payload(130, 0xFE);  // 129 x 254 = 32766
  EXPECT_EQ(sirf.CheckSum(payload.data(), 129), 0x7FFE);
  EXPECT_EQ(sirf.CheckSum(payload.data(), 130), 252);
  CString line("noise$PSRF"), none("PSRF");
  EXPECT_TRUE(AppendNmeaChecksum(line));
  EXPECT_EQ(line, "noise$PSRF*17");
  EXPECT_FALSE(AppendNmeaChecksum(none));
  EXPECT_EQ(none, "PSRF");
}

TEST_F(StarlinkDriver, ResetsWithoutAcknowledgementAndGoesOnIfItDoesNotGoOut) {
  EXPECT_EQ(Steps(&CStarlink::QueryPAR), R"(write "$PSLIQ,PAR\r\n"; wait 500)");
  EXPECT_TRUE(Steps(resetWithAck).ends_with("result true"));
  line.LimitWrites(1);
  EXPECT_EQ(Steps(reset), R"(write "$"; wait 5000; write "$"; wait 200; write "$"; wait 200; )"
                          R"(write "$"; wait 200; write "$"; wait 200; write "$"; wait 200; result false)");
  Unplug();
  EXPECT_EQ(Steps(reset), "result false");
}

// The host moves the bytes: nothing is opened, so that the lines are lost, but the start succeeds in its own
// time.
TEST_F(LeicaDriver, IsSetUpWithAnExternalPortToo) {
  Unplug();
  EXPECT_EQ(Steps(start), "result false");
  receiver.SetupReceiver(1, 0, 0.0, "", true);
  EXPECT_EQ(Steps(start), "wait 200; wait 200; wait 200; wait 200; result true");
}

class JDriver : public DriverTest<CSokkiaAxis3> {
 protected:
  // The interval of block 95 outlives the receivers: each test begins as a fresh process does.
  JDriver() { receiver.SetRawDataOutput(true, 5); }
  std::string Closing() {
    const std::string steps = Steps(&CSokkiaAxis3::SetGgaOnlyNMEA);
    return steps.substr(steps.find("2000; ") + 6);
  }
};

TEST_F(JDriver, SwitchesRawOutputAtOneOfTwoRates) {
  EXPECT_EQ(Steps(&CSokkiaAxis3::QueryJSHOW), R"(write "$JSHOW\r\n"; wait 200)");
  for (const auto& [interval, rate] : {std::pair(5.0, "0.2"), {5.9, "0.2"}, {0.2, "1"}, {6.0, "1"}})
    EXPECT_TRUE(Steps(Interval(interval)).starts_with("write \"$JBIN,96,"s + rate + "\\r")) << interval;
}

TEST_F(JDriver, AndItsLikeRefuseAnIntervalThatNoLineCanHold) {
  CAshtech ashtech;
  Cgsr2650lb gsr;
  line.ForgetSteps();
  for (const double interval : {std::nan(""), HUGE_VAL, 1e300})
    EXPECT_FALSE(receiver.SetRawDataOutputInterval(interval) || ashtech.SetRawDataOutputInterval(interval) ||
                 gsr.SetRawDataOutputInterval(interval))
        << interval;
  EXPECT_EQ(line.Transcript(), "");
}

TEST_F(JDriver, RepeatsTheLastIntervalOfBlock95BehindASave) {
  constexpr auto kFast = R"(write "$JBIN,95,0.2\r\n"; wait 200)",
                 kSlow = R"(write "$JBIN,95,1\r\n"; wait 200)";
  receiver.EnablePostProcessing(false);
  EXPECT_EQ(Closing(), kFast);
  receiver.EnablePostProcessing(true);
  EXPECT_EQ(Closing(), kSlow);
  Close();
  receiver.SetRawDataOutput(true, 5);  // does not reach the receiver, so nothing changes
  receiver.Initialize();
  EXPECT_EQ(Closing(), kSlow);
}

TEST_F(GsrDriver, TunesWithinItsBandAlone) {
  const auto tune = [](double f) { return [f](auto& r) { r.ChangeCDGPS_Freq(f); }; };
  for (const double outside : {3000.5, -1.0, std::nan("")}) EXPECT_EQ(Steps(tune(outside)), "");
  EXPECT_TRUE(Steps(tune(0)).starts_with("write \"ASSIGNLBAND CDGPS 0 4800"));
  EXPECT_TRUE(Steps(tune(3000)).starts_with("write \"ASSIGNLBAND CDGPS 3000000 4800"));
  EXPECT_TRUE(Steps([](auto& r) {
                r.SetLbandFrequency(1535.1375, 600);
              }).starts_with("write \"ASSIGNOMNI USER 1535138 600"));
}

TEST_F(GsrDriver, TellsTheHostItsNewSourceAndForgetsWhatItAsksForAgain) {
  receiver.SetDgpsMode(DGPS_MODE_CDGPS);
  ASSERT_TRUE(FeedSentence(kMotion)) << "a sentence that by itself publishes nothing";
  EXPECT_TRUE(Last().m_Status.m_bStatusUpdated && Last().m_Status.m_bDgpsModeValid);
  EXPECT_EQ(Last().m_Status.m_nDgpsMode, DGPS_MODE_CDGPS);
  const std::pair<void (Cgsr2650lb::*)(), DgpsMode> rows[] = {
      {&Cgsr2650lb::QueryDgpsMode, DGPS_MODE_NONE},
      {&Cgsr2650lb::QueryBeacon, DGPS_MODE_NONE},
      {&Cgsr2650lb::QuerySatElevMask, DGPS_MODE_CDGPS},  // the mask alone was asked for
  };
  for (const auto& [query, mode] : rows) {
    receiver.SetDgpsMode(DGPS_MODE_CDGPS);
    (receiver.*query)();
    EXPECT_FALSE(FeedSentence(kMotion));
    ASSERT_TRUE(Feed(GgaAt("120000")));
    EXPECT_EQ(Last().m_Status.m_nDgpsMode, mode);
  }
  receiver.SetDgpsMode(DGPS_MODE_CDGPS);
  Close();
  receiver.QueryDgpsMode();
  EXPECT_TRUE(FeedSentence(kMotion)) << "nothing was asked for on a closed port";
}

TEST_F(GsrDriver, SendsItsTuningAlongWithAnotherPublication) {
  for (const auto& [frequency, mode] : {std::pair(0.0, 1), std::pair(1535.1, 2)}) {
    receiver.SetLbandFrequency(frequency, 1200);
    EXPECT_FALSE(FeedSentence(kMotion));
    ASSERT_TRUE(Feed(GgaAt("120000")));
    EXPECT_EQ(Last().m_Status.m_nLbandMode, mode);
  }
  receiver.SetLbandFrequency(0.0, 1200);
  receiver.Initialize();
  ASSERT_TRUE(Feed(GgaAt("120000")));
  EXPECT_EQ(Last().m_Status.m_nLbandMode, 0) << "a start forgets what was to be told";
}

TEST_F(GsrDriver, SwitchesTheRawLogsOnlyWhenTheyChange) {
  // The first step, and whether there is one, tells what was switched.
  const auto expect = [this](auto operation, const std::string& first) {
    const std::string steps = Steps(operation);
    EXPECT_TRUE(first.empty() ? steps == "result true" : steps.starts_with("write \"" + first + "\\r\\n\""))
        << steps;
  };
  const std::string off = "UNLOG RANGEB";
  expect(Raw(false), "");
  expect(Interval(4.0), off);  // off: the interval is not kept
  expect(Raw(true), "LOG RANGEB ONTIME 1");
  expect(Raw(true), "");
  expect(Interval(1.9), "");
  expect(Interval(2.0), "LOG RANGEB ONTIME 2");
  expect(Interval(2.9), "");
  expect(Raw(false), off);
  expect(Raw(false), "");
  expect(Raw(true), "LOG RANGEB ONTIME 1");
  EXPECT_TRUE(Steps(start).ends_with("result true"));
  expect(Raw(false), "");  // a start takes the logs for off
  expect(Raw(true), "LOG RANGEB ONTIME 1");
  Close();
  expect(Raw(true), "");
  ASSERT_TRUE(receiver.OpenPort()) << "whose receiver has heard nothing of it";
  expect(Raw(true), "LOG RANGEB ONTIME 1");
}

TEST_F(GsrDriver, SaysWhetherItsResetWasAcknowledged) {
  EXPECT_TRUE(Steps(reset).ends_with("result true"));
  EXPECT_TRUE(Steps(resetWithAck).ends_with("wait 3000; result false"));
  Acknowledge();
  EXPECT_TRUE(Steps(resetWithAck).ends_with("result true"));
  line.SetStepHandler([this](const CRehearsal::Step& step) {
    if (step.kind == CRehearsal::StepKind::write) Unplug();
  });
  EXPECT_EQ(Steps(reset), "wait 10000; result false") << "the line goes with the first command";
  EXPECT_EQ(Steps(reset), "result false");
}
