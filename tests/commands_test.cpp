#include "gpsengine/receiver/command.h"

#include "gpsengine/drivers/receivers.h"
#include "tests/support/drivertest.h"

TEST(CommandLine, HasItsEndItsLengthAndTheRightChecksum) {
  const auto ofLength = [](std::size_t n) { return std::string(n - 2, 'A') + "\r\n"; };
  EXPECT_TRUE(IsCommandLine("$JSAVE\r\n"));
  EXPECT_TRUE(IsCommandLine("datum user\r\n"));
  EXPECT_TRUE(IsCommandLine("$PSRF103,00,00,02,01*26\r\n"));
  EXPECT_TRUE(IsCommandLine(ofLength(200)));
  EXPECT_FALSE(IsCommandLine(ofLength(201)));
  for (const char* line :
       {"", "$JSAVE", "$JSAVE\n", "$JSAVE\r\n\r\n", "$J\tSAVE\r\n", "$PSRF103,00,00,02,01*27\r\n",
        "$PSRF103,00,00,02,01*2\r\n", "$PSRF103,00,00,02,01*26 \r\n"})
    EXPECT_FALSE(IsCommandLine(line)) << line;
}

using HostCommands = DriverTest<COtherGps>;

TEST_F(HostCommands, AreSentAsALineOrAsBytes) {
  const unsigned char bytes[] = {0xA0, 0xA2, 0x00, 0xFF};
  Check({
      {[](auto& r) { r.Send("$JSAVE"); }, R"(write "$JSAVE\r\n")"},
      {[](auto& r) { r.Send(""); }, R"(write "\r\n")"},
      {[](auto& r) { r.Send(CString(u'A', 199)); }, ""},  // and a line end: one too many
      {[&](auto& r) { return r.SendBinary(bytes, 4); }, "write-hex A0A200FF; result true", "result false"},
      {[&](auto& r) { return r.SendBinary(bytes, 0); }, "result false", "result false"},
      {[&](auto& r) { return r.SendBinary(nullptr, 4); }, "result false", "result false"},
  });
}

TEST_F(HostCommands, ThatAreCutShortAreReportedForBytesAlone) {
  const unsigned char bytes[] = {0xA0, 0xA2, 0x00, 0xFF};
  line.LimitWrites(2);
  EXPECT_EQ(Steps([&](auto& r) { return r.SendBinary(bytes, 4); }), "write-hex A0A2; result false");
  EXPECT_EQ(Steps([&](auto& r) { r.Send("$JSAVE"); }), R"(write "$J")");
}

namespace {

class AcknowledgedReceiver : public COtherGps {
 public:
  using CGPSReceiver::Write;
  using CGPSReceiver::WriteAck;
};

}  // namespace

using AcknowledgedCommand = DriverTest<AcknowledgedReceiver>;

TEST_F(AcknowledgedCommand, WaitsForTheAcknowledgementOrForItsTime) {
  const auto write = [](bool bWait) {
    return [bWait](auto& r) { return r.WriteAck("$PASHS,SAV,Y\r\n", bWait, 700); };
  };
  Check({
      {write(false), R"(write "$PASHS,SAV,Y\r\n"; wait 700; result true)", "result false"},
      {write(true), R"(write "$PASHS,SAV,Y\r\n"; wait-ack 700; result false)", "result false"},
      {[](auto& r) { return r.WriteAck(CString(u'A', 201), false, 700); }, "result false", "result false"},
  });
}

TEST_F(AcknowledgedCommand, FindsItsWaitArmedByTheQuickestAnswer) {
  line.SetStepHandler([this](const CRehearsal::Step& step) {
    if (step.kind == CRehearsal::StepKind::write) Feed("$PASHR,ACK\r\n");
  });
  EXPECT_EQ(Steps([](auto& r) { return r.WriteAck("$PASHS,SAV,Y\r\n", true, 700); }),
            R"(write "$PASHS,SAV,Y\r\n"; result true)");
  EXPECT_TRUE(Last().m_Status.m_bAck) << "the host hears of it as well";
}
