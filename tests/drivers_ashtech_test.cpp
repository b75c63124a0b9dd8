#include "gpsengine/drivers/ashtech.h"
#include "tests/support/drivertest.h"

using AshtechDriver = DriverTest<CAshtech>;
using RacalDriver = DriverTest<CRacal>;
using CsiDriver = DriverTest<CCSI>;
using OtherDriver = DriverTest<COtherGps>;

namespace {

constexpr auto kFullNmea = R"(
    write "$PASHS,NME,ALL,A,OFF\r\n"; wait 200
    write "$PASHS,NME,GGA,A,ON\r\n"; wait 200
    write "$PASHS,NME,GSA,A,ON\r\n"; wait 200
    write "$PASHS,NME,VTG,A,ON\r\n"; wait 200
    write "$PASHS,NME,SAT,A,ON\r\n"; wait 200
    write "$PASHS,NME,GSV,A,ON\r\n"; wait 200)";
constexpr auto kGgaOnlyNmea = R"(
    write "$PASHS,NME,ALL,A,OFF\r\n"; wait 200
    write "$PASHS,NME,GGA,A,ON\r\n"; wait 200)";
constexpr auto kRawOn = R"(
    write "$PASHS,RAW,MBN,A,ON\r\n"; wait 200
    write "$PASHS,RAW,PBN,A,ON\r\n"; wait 200
    write "$PASHS,RAW,SNV,A,ON\r\n"; wait 200
    result true)";
constexpr auto kRawOff = R"(
    write "$PASHS,RAW,MBN,A,OFF\r\n"; wait 200
    write "$PASHS,RAW,PBN,A,OFF\r\n"; wait 200
    write "$PASHS,RAW,SNV,A,OFF\r\n"; wait 200
    result true)";
constexpr auto kQueryPar = R"(write "$PASHQ,PAR\r\n"; wait 500)";

// "Reset" of `wait` "wait": 23 seconds. Of "wait-ack": the same with answers.
std::string Reset(const std::string& wait) {
  std::string steps = R"(
      write "$PASHS,RST\r\n"; wait 10000; pause 3000
      write "$PASHS,RTC,AUT,Y\r\n"; wait 1000
      write "$PASHS,RTC,REM,B\r\n"; wait 1000
      write "$PASHS,NME,GGA,A,ON\r\n"; wait 1000
      write "$PASHS,NME,GSA,A,ON\r\n"; wait 1000
      write "$PASHS,NME,VTG,A,ON\r\n"; wait 1000
      write "$PASHS,NME,SAT,A,ON\r\n"; wait 1000
      write "$PASHS,PDP,14\r\n"; wait 1000
      write "$PASHS,HDP,10\r\n"; wait 1000
      write "$PASHS,VDP,10\r\n"; wait 1000
      write "$PASHS,SAV,Y\r\n"; wait 1000
      )";
  for (std::size_t i = 0; (i = steps.find("; wait ", i)) != steps.npos; ++i) steps.replace(i + 2, 4, wait);
  steps.replace(steps.find("pause"), 5, "wait");
  return steps;
}

}  // namespace

TEST_F(AshtechDriver, SetsNmeaAndRawOutput) {
  Check({
      {&CAshtech::SetDefaultNMEA, kFullNmea},
      {&CAshtech::SetGgaOnlyNMEA, kGgaOnlyNmea},
      {[](auto& r) { return r.EnablePostProcessing(true); }, kRawOn, "result false"},
      {[](auto& r) { return r.EnablePostProcessing(false); }, kRawOff, "result false"},
      {[](auto& r) { return r.SetRawDataOutputInterval(1.0); },
       R"(write "$PASHS,RCI,1.000000\r\n"; wait 200; result true)", "result true"},
      {[](auto& r) { return r.SetRawDataOutputInterval(0.25); },
       R"(write "$PASHS,RCI,0.250000\r\n"; wait 200; result true)", "result true"},
      {[](auto& r) { return r.SetRawDataOutputInterval(0.2); }, "result false", "result false"},
      {[](auto& r) { return r.ResetAll(true); }, "result false", "result false"},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_MANUAL, "290.5", "100"); }, ""},
  });
}

TEST_F(AshtechDriver, GivesUpRawOutputAtTheFirstLineThatDoesNotGoOut) {
  line.LimitWrites(5);
  EXPECT_EQ(Steps([](auto& r) { return r.EnablePostProcessing(true); }), R"(write "$PASH"; result false)");
  EXPECT_EQ(Steps([](auto& r) { return r.SetRawDataOutputInterval(2.0); }),
            R"(write "$PASH"; wait 200; result true)");
}

TEST_F(AshtechDriver, SwitchesRawOutputOffWhenSuspended) {
  EXPECT_EQ(Steps([](auto& r) { r.Suspend(); }) + "; result true", Joined(kRawOff));
  EXPECT_EQ(Steps([](auto& r) { r.Suspend(); }), "");
}

TEST_F(RacalDriver, SpeaksAsAnAshtech) {
  Check({
      {&CRacal::SetDefaultNMEA, kFullNmea},
      {&CRacal::SetGgaOnlyNMEA, kGgaOnlyNmea},
      {[](auto& r) { return r.EnablePostProcessing(true); }, kRawOn, "result false"},
      {[](auto& r) { return r.ResetAll(false); }, "result false", "result false"},
  });
}

TEST_F(OtherDriver, IsLeftAlone) {
  Check({
      {[](auto& r) { return r.EnablePostProcessing(true); }, "result true", "result false"},
      {[](auto& r) { return r.SetRawDataOutputInterval(1.0); }, "result false", "result false"},
      {[](auto& r) { return r.ResetAll(true); }, "result false", "result false"},
      {&COtherGps::SetDefaultNMEA, ""},
      {&COtherGps::KeepAlive, ""},
      {[](auto& r) { r.SetDgpsMode(DGPS_MODE_WAAS); }, ""},
  });
}

TEST_F(CsiDriver, SetsAndQueriesAllItHas) {
  Check({
      {&CCSI::SetDefaultNMEA, kFullNmea},
      {&CCSI::SetGgaOnlyNMEA, kGgaOnlyNmea},
      {&CCSI::QueryPAR, kQueryPar},
      {&CCSI::QueryNmeaActive, kQueryPar},
      {&CCSI::QueryGpsSettings, kQueryPar},
      {&CCSI::QuerySatElevMask, kQueryPar},
      {&CCSI::QueryBeacon, R"(
          write "$GPCRQ,MSS\r\n"; wait 200
          write "$GPCRQ,MSK\r\n"; wait 200)"},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_AUTO, "290.5", "100"); },
       R"(write "$GPMSK,,A,,A,0\r\n"; wait 200)"},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_MANUAL, "290.5", "100"); },
       R"(write "$GPMSK,290.5,M,100,M,0\r\n"; wait 200)"},
      {[](auto& r) { r.SetBeacon(static_cast<BEACON_MODE_TYPE>(2), "120", ""); },
       R"(write "$GPMSK,120,M,,A,0\r\n"; wait 200)"},
      {[](auto& r) { r.SetSatElevMask(5); }, R"(write "$PASHS,PEM,5\r\n"; wait 200)"},
      {[](auto& r) { r.SetSatElevMask(-10); }, R"(write "$PASHS,PEM,-10\r\n"; wait 200)"},
      {[](auto& r) { return r.SetRawDataOutputInterval(30); },
       R"(write "$PASHS,RCI,30.000000\r\n"; wait 200; result true)", "result true"},
  });
}

TEST_F(CsiDriver, ResetsItselfIn23SecondsOrByAcknowledgement) {
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(false); }), Joined(Reset("wait") + "result true"));
  Acknowledge();
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(true); }), Joined(Reset("wait-ack") + "result true"));
}

TEST_F(CsiDriver, GoesOnWithAResetThatIsNotAcknowledged) {
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(true); }), Joined(Reset("wait-ack") + "result false"));
  Acknowledge([](int nWait) { return nWait != 4; });
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(true); }), Joined(Reset("wait-ack") + "result false"));
}

TEST_F(CsiDriver, OpensThePortForAResetAndFailsIfItCannot) {
  Close();
  EXPECT_NE(Steps([](auto& r) { return r.ResetAll(false); }).find(Joined(Reset("wait") + "result true")),
            std::string::npos);
  Unplug();
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(false); }), "result false");
  // With the port in the host's hands there is nothing to open, and nothing is open.
  receiver.SetupReceiver(1, 0, 0.0, "", true);
  EXPECT_EQ(Steps([](auto& r) { return r.ResetAll(false); }), "result false");
}
