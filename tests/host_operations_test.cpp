#include "gpsengine/face/commands.h"
#include "gpsengine/face/models.h"
#include "gpsengine/face/rawoutput.h"
#include "gpsengine/face/rehearse.h"
#include "gpsengine/platform/application.h"
#include "host/commands/outcome.h"
#include "host/session/rawoutput.h"
#include "tests/support/basics.h"

using namespace host;

namespace {

class HostOperations : public testing::Test {
 private:
  CWinApp app_{"gpsengine-test"};
};

TEST_F(HostOperations, SayWhatWasSentAndHowTheLineAnswered) {
  const std::tuple<const char*, const char*, const char*, long long, const char*> rows[] = {
      {"CSI", "set-elevation-mask 12", "$PASHR,ACK*3D\r\n", 0, R"(sent "$PASHS,PEM,12"; the receiver ack)"},
      {"CSI", "set-elevation-mask 12", "$PASHR,NAK*30\r\n", 0, "6 sent"},
      {"CSI", "set-elevation-mask 12", "$GPGGA,\r\n", 0, "6 sent"},
      {"CSI", "gga-only", "$PASHR,NAK*30\r\n$PASHR,ACK*3D\r\n", 1, "took 1 and refused 1"},
      {"GSR2650 LB", "gga-only", "\r\n<OK\r\n[COM2]", 0, R"(sent 13 messages, "UNLOG  GPALM" to "UN)"},
      {"SiRF", "gga-only", "\xA0", 0, "no message was understood: is it the model SiRF, at 4800 baud"},
      {"SiRF", "gga-only", "$GPGGA,", 0, "this make gives none to such commands"},
      {"Starlink", "gga-only", "", 0, "no bytes came from /dev/x"},
      {"CSI", "keep-alive", "", 0, "nothing was sent"}};
  for (const auto& [model, call, bytes, reports, text] : rows) {
    const auto words = Split(call, ' ');
    const Arguments arguments{{words.begin() + 1, words.end()}, false};
    Outcome outcome(Rehearse(model, Prepare(FindOperation(words[0]), arguments)));
    for (const char c : std::string_view(bytes)) outcome.Feed({&c, 1});
    const Outcome::Line line{"/dev/x", model, 4800, bytes[0] == '$', reports};
    std::string told;
    const auto refusal = ErrorOf([&] { told = outcome.Tell(line); });
    EXPECT_TRUE(Has(told + refusal, text));
  }
}

TEST_F(HostOperations, SayWhatAnInterruptionHasLeftUndone) {
  const Action action = Prepare(FindOperation("set-dgps"), {{"none"}, false});
  const Outcome outcome(Rehearse("SiRF", action));
  const std::pair<long long, const char*> rows[] = {
      {0, "has not been sent 9 messages"},
      {2999, "has not been sent a binary message. Give"},  // what leads back to its text protocol was sent
      {3001, "all of set-dgps had been sent"},
  };
  for (const auto& [passed, text] : rows) {
    const Transcript sent = Rehearse("SiRF", action, true, passed);
    const std::string told = outcome.TellInterrupted("set-dgps", sent);
    EXPECT_TRUE(Has(told, text)) << passed << ": " << told;
  }
}

/// What a run for a RINEX log writes, without its waits: what has come before its commands, and what
/// follows.
std::string RawRun(const std::string& model, double interval, const std::vector<CString>& sentences) {
  const Action run = [&](CGPSReceiver& receiver) {
    RawOutput output(receiver, interval);
    output.OnEvent(RunEvent::starting);
    for (CString sentence : sentences) receiver.Parse(sentence);
    output.Start();
    receiver.Send("-");
    output.OnEvent(RunEvent::over);
    return Result::none;  // whose destructor finds nothing to do
  };
  std::string text;
  for (const auto& step : Rehearse(model, run).steps)
    text += step.bytes.substr(0, step.bytes.find('\r')) + (step.bytes.empty() ? "" : ";");
  return text;
}

TEST_F(HostOperations, BringAReceiverToSendRawDataAndPutBackWhatWasThere) {
  const CString gsa = "$GPGSA,A,3,01,02,03,04,,,,,,,,,2.0,1.0,1.7*33\r\n";
  const CString gsv = "$GPGSV,1,1,01,02,45,100,40*4E\r\n";
  const std::string on = "$PASHS,RAW,MBN,A,ON;$PASHS,RAW,PBN,A,ON;$PASHS,RAW,SNV,A,ON;";
  const std::string off = "$PASHS,NME,GSA,A,OFF;$PASHS,NME,GSV,A,OFF;-;";
  const std::tuple<const char*, double, std::vector<CString>, std::string> rows[] = {
      {"Ashtech", 0.0, {}, on + off},
      {"CSI", 0.5, {gsv}, on + "$PASHS,RCI,0.500000;" + off + "$PASHS,NME,GSV,A,ON;"},
      {"Racal", 0.0, {gsa, gsv}, on + off + "$PASHS,NME,GSA,A,ON;$PASHS,NME,GSV,A,ON;"},
      {"CSI - MAX", 0.0, {gsa, gsv}, "$JBIN,96,1;$JBIN,95,1;$JSAVE;-;"},
      {"CSI - MAX", 30.0, {}, "$JBIN,96,1;$JBIN,95,1;$JSAVE;-;"},
      {"Sokkia Axis3", 0.4, {}, "$JBIN,96,0.2;$JBIN,95,0.2;$JSAVE;-;"},
      {"GSR2650 LB",
       1.0,
       {gsa, gsv},
       "LOG RANGEB ONTIME 1;LOG RAWEPHEMB ONCHANGED;LOG ALMANACB ONCHANGED;SAVECONFIG;-;"},
  };
  for (const auto& [model, interval, sentences, written] : rows)
    EXPECT_EQ(RawRun(model, interval, sentences), written) << model;
  const std::tuple<const char*, double, const char*> refused[] = {
      {"Trimble", 0.0, "has no raw data"},
      {"CSI - MAX", 0.3, "its intervals in seconds are 0.2 or 1"},
      {"GSR2650 LB", 0.5, "are whole numbers from 1 to 86400"},
      {"Ashtech", 0.1, "are numbers from 0.25 to 86400"}};
  for (const auto& [model, interval, why] : refused) {
    const auto make = [model = model, interval = interval] { RawOutput(FindModel(model), interval); };
    EXPECT_TRUE(Has(ErrorOf(make), why));
  }
}

TEST_F(HostOperations, SayWhyALogOfRawDataIsEmptyByTheModel) {
  const std::string beside = "beside GSA and GSV sentences raw data are passed over";
  EXPECT_EQ(WhyNoRawData("CSI"), beside + ": the operation gga-only ends them");
  EXPECT_TRUE(Has(WhyNoRawData("Sokkia Axis3"),
                  "in blocks once \"post-processing on\" asks for them, and no good one came"));
  EXPECT_EQ(WhyNoRawData("Other"), "the model has no raw data that could be logged; with others, " + beside);
}

TEST_F(HostOperations, LeaveNothingBehindWhenTheyAreRehearsed) {
  const std::string before = gps::rehearse("Sokkia Axis3", "gga-only").Text();
  for (const char* seconds : {"0.2", "1"}) {
    EXPECT_EQ(gps::rehearse("CSI - MAX", "raw-interval", {seconds}).result, Result::yes);
    EXPECT_EQ(gps::rehearse("Sokkia Axis3", "gga-only").Text(), before) << seconds;
  }
}

}  // namespace
