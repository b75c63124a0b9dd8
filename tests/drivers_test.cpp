// What the drivers do beyond their command sets: limits, failures, acknowledgements, what they keep.
#include <cmath>

#include "gpsengine/drivers/ashtech.h"
#include "gpsengine/drivers/gsr2650lb.h"
#include "gpsengine/drivers/plain.h"
#include "gpsengine/drivers/sirf.h"
#include "gpsengine/drivers/sokkiaaxis3.h"
#include "gpsengine/drivers/starlink.h"
#include "tests/support/drivertest.h"

using namespace std::string_literals;

namespace {

class AcknowledgedReceiver : public COtherGps {
 public:
  using CGPSReceiver::WriteAck;
};

using OtherDriver = DriverTest<AcknowledgedReceiver>;
using AshtechDriver = DriverTest<CAshtech>;
using CsiDriver = DriverTest<CCSI>;
using SirfDriver = DriverTest<CSirf>;
using LeicaDriver = DriverTest<CLeica>;
using StarlinkDriver = DriverTest<CStarlink>;
using GsrDriver = DriverTest<Cgsr2650lb>;

const auto reset = [](auto& r) { return r.ResetAll(false); };
const auto resetWithAck = [](auto& r) { return r.ResetAll(true); };
const auto start = [](auto& r) { return r.Initialize(); };
auto Source(int mode) {
  return [mode](auto& r) { r.SetDgpsMode(static_cast<DgpsMode>(mode)); };
}
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
  Check({
      {[](auto& r) { r.Send("$JSAVE"); }, R"(write "$JSAVE\r\n")"},
      {[](auto& r) { r.Send(""); }, R"(write "\r\n")"},
      {[](auto& r) { r.Send(CString(u'A', 199)); }, ""},  // and a line end: one too many
      {[&](auto& r) { return r.SendBinary(bytes, 4); }, "write-hex A0A200FF; result true", "result false"},
      {[&](auto& r) { return r.SendBinary(bytes, 0); }, "result false", "result false"},
      {[&](auto& r) { return r.SendBinary(nullptr, 4); }, "result false", "result false"},
      {Raw(true), "result true", "result false"},
  });
}

TEST_F(OtherDriver, ReportsForBytesAloneThatTheyAreCutShort) {
  const unsigned char bytes[] = {0xA0, 0xA2, 0x00, 0xFF};
  line.LimitWrites(2);
  EXPECT_EQ(Steps([&](auto& r) { return r.SendBinary(bytes, 4); }), "write-hex A0A2; result false");
  EXPECT_EQ(Steps([&](auto& r) { r.Send("$JSAVE"); }), R"(write "$J")");
}

TEST_F(OtherDriver, WaitsForTheAcknowledgementOrForItsTime) {
  const auto write = [](bool bWait) {
    return [bWait](auto& r) { return r.WriteAck("$PASHS,SAV,Y\r\n", bWait, 700); };
  };
  Check({
      {write(false), R"(write "$PASHS,SAV,Y\r\n"; wait 700; result true)", "result false"},
      {write(true), R"(write "$PASHS,SAV,Y\r\n"; wait-ack 700; result false)", "result false"},
      {[](auto& r) { return r.WriteAck(CString(u'A', 201), false, 700); }, "result false", "result false"},
  });
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
  Check({
      {Interval(0.25), R"(write "$PASHS,RCI,0.250000\r\n"; wait 200; result true)", "result true"},
      {Interval(0.2), "result false", "result false"},
      {reset, "result false", "result false"},
      {Raw(true), Steps(Raw(true)), "result false"},
  });
}

TEST_F(AshtechDriver, GivesUpRawOutputAtTheFirstLineThatDoesNotGoOut) {
  line.LimitWrites(5);
  EXPECT_EQ(Steps(Raw(true)), R"(write "$PASH"; result false)");
  EXPECT_EQ(Steps(Interval(2.0)), R"(write "$PASH"; wait 200; result true)");
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
  const std::string steps = Steps(Source(DGPS_MODE_NONE));
  EXPECT_NE(steps.find(R"(write "$PSRF100,0,115200,8,1,0*04\r\n"; wait 3000)"), std::string::npos) << steps;
  EXPECT_NE(steps.find("C2000145B0B3"), std::string::npos) << steps;
  EXPECT_TRUE(Steps(resetWithAck).ends_with("result true"));
}

TEST(SirfFrame, ChecksumKeeps15BitsOfTheSum) {
  struct Sirf : CSirf {
    using CSirf::CheckSum;
  } sirf;
  std::vector<unsigned char> payload(130, 0xFE);  // 129 x 254 = 32766
  EXPECT_EQ(sirf.CheckSum(payload.data(), 129), 0x7FFE);
  EXPECT_EQ(sirf.CheckSum(payload.data(), 130), 252);
}

TEST(SirfSentence, GetsTheChecksumOfWhatStandsBehindItsDollar) {
  CString sentence = "noise $PSRF103,00,00,02,01", noSentence = "PSRF103";
  EXPECT_TRUE(AppendNmeaChecksum(sentence));
  EXPECT_EQ(sentence, "noise $PSRF103,00,00,02,01*26");
  EXPECT_FALSE(AppendNmeaChecksum(noSentence));
}

TEST_F(StarlinkDriver, ResetsWithoutAcknowledgement) {
  const std::string whole = Steps(reset);
  EXPECT_TRUE(whole.ends_with("result true"));
  EXPECT_EQ(Steps(resetWithAck), whole);
}

TEST_F(StarlinkDriver, GoesOnWithAResetThatDoesNotGoOut) {
  line.LimitWrites(1);
  EXPECT_EQ(Steps(reset), R"(write "$"; wait 5000; write "$"; wait 200; write "$"; wait 200; )"
                          R"(write "$"; wait 200; write "$"; wait 200; write "$"; wait 200; result false)");
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

TEST_F(JDriver, TakesItsTimeOnAClosedPortToo) {
  EXPECT_EQ(Steps(Source(-1)), R"(write "$JSAVE\r\n"; wait 2000)");
  Close();
  EXPECT_EQ(Steps(Source(DGPS_MODE_NONE)), "wait 1000; wait 2000");
  EXPECT_EQ(Steps(start), "wait 10; wait 500; result true");
}

TEST_F(JDriver, SwitchesRawOutputAtOneOfTwoRates) {
  const auto at = [](const char* pszRate) {
    return std::string("write \"$JBIN,96,") + pszRate + R"(\r\n"; write "$JBIN,95,)" + pszRate +
           R"(\r\n"; write "$JSAVE\r\n"; result true)";
  };
  for (const double fast : {5.0, 5.9}) EXPECT_EQ(Steps(Interval(fast)), at("0.2"));
  for (const double slow : {0.2, 6.0}) EXPECT_EQ(Steps(Interval(slow)), at("1")) << slow;
  Close();
  EXPECT_EQ(Steps(Interval(5.0)), "result true");
}

TEST_F(JDriver, AndItsLikeRefuseAnIntervalThatNoLineCanHold) {
  CAshtech ashtech;
  Cgsr2650lb gsr;
  for (CGPSReceiver* const each : {static_cast<CGPSReceiver*>(&receiver),
                                   static_cast<CGPSReceiver*>(&ashtech), static_cast<CGPSReceiver*>(&gsr)}) {
    line.ForgetSteps();
    for (const double interval : {std::nan(""), HUGE_VAL, 1e300})
      EXPECT_FALSE(each->SetRawDataOutputInterval(interval)) << each->GetName().ToUtf8() << interval;
    EXPECT_EQ(line.Transcript(), "");
  }
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

namespace {

constexpr auto kPosition = "$GPGGA,120000.00,4807.0380,N,01131.0000,E,1,08,0.9,545.4,M,47.0,M,,";
constexpr auto kMotion = "$GPVTG,84.4,T,,M,22.4,N,41.5,K";

}  // namespace

TEST_F(GsrDriver, TunesWithinItsBandAlone) {
  const auto tune = [](double f) { return [f](auto& r) { r.ChangeCDGPS_Freq(f); }; };
  const auto tuned = [](const std::string& kHz) {
    return "write \"ASSIGNLBAND CDGPS " + kHz + R"( 4800\r\n"; wait 100; write "SAVECONFIG\r\n"; wait 1000)";
  };
  const std::string lowest = tuned("0"), highest = tuned("3000000");
  Check({
      {[](auto& r) { r.SetLbandFrequency(1535.1375, 600); },
       R"(write "ASSIGNOMNI USER 1535138 600\r\n"; wait 800; write "SAVECONFIG\r\n"; wait 2000)"},
      {tune(0), lowest},
      {tune(3000), highest},
      {tune(3000.5), ""},
      {tune(-1), ""},
      {tune(std::nan("")), ""},
  });
}

TEST_F(GsrDriver, TellsTheHostItsNewSourceWithTheNextPublication) {
  receiver.SetDgpsMode(DGPS_MODE_CDGPS);
  ASSERT_TRUE(FeedSentence(kMotion)) << "a sentence that by itself publishes nothing";
  EXPECT_TRUE(Last().m_Status.m_bStatusUpdated);
  EXPECT_TRUE(Last().m_Status.m_bDgpsModeValid);
  EXPECT_EQ(Last().m_Status.m_nDgpsMode, DGPS_MODE_CDGPS);
}

TEST_F(GsrDriver, ForgetsWhatItAsksForAgain) {
  const std::pair<void (Cgsr2650lb::*)(), DgpsMode> rows[] = {
      {&Cgsr2650lb::QueryDgpsMode, DGPS_MODE_NONE},
      {&Cgsr2650lb::QueryBeacon, DGPS_MODE_NONE},
      {&Cgsr2650lb::QuerySatElevMask, DGPS_MODE_CDGPS},  // the mask alone was asked for
  };
  for (const auto& [query, mode] : rows) {
    receiver.SetDgpsMode(DGPS_MODE_CDGPS);
    (receiver.*query)();
    EXPECT_FALSE(FeedSentence(kMotion));
    ASSERT_TRUE(FeedSentence(kPosition));
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
    ASSERT_TRUE(FeedSentence(kPosition));
    EXPECT_EQ(Last().m_Status.m_nLbandMode, mode);
  }
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
  EXPECT_TRUE(Steps(start).ends_with("result true"));
  expect(Raw(false), "");  // a start takes the logs for off
  expect(Raw(true), "LOG RANGEB ONTIME 1");
  Close();
  expect(Raw(true), "");
}

TEST_F(GsrDriver, SaysWhetherItsResetWasAcknowledged) {
  EXPECT_TRUE(Steps(reset).ends_with("result true"));
  EXPECT_TRUE(Steps(resetWithAck).ends_with("wait 3000; result false"));
  Acknowledge();
  EXPECT_TRUE(Steps(resetWithAck).ends_with("result true"));
  Close();
  EXPECT_EQ(Steps(reset), "result false");
}
