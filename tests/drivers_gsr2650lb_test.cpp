#include "gpsengine/drivers/gsr2650lb.h"

#include <limits>

#include "tests/support/drivertest.h"

using GsrDriver = DriverTest<Cgsr2650lb>;

namespace {

// Without a port name, two blanks follow the first word.
constexpr auto kFullNmea = R"(
    write "LOG  GPGGA ONTIME 1 0 NOHOLD\r\n"; wait 200
    write "UNLOG  GPGGALONG\r\n"; wait 200
    write "UNLOG  GPGGARTK\r\n"; wait 200
    write "UNLOG  GPGLL\r\n"; wait 200
    write "UNLOG  GPGRS\r\n"; wait 200
    write "LOG  GPGSA ONTIME 1 0 NOHOLD\r\n"; wait 200
    write "UNLOG  GPGST\r\n"; wait 200
    write "LOG  GPGSV ONTIME 1 0 NOHOLD\r\n"; wait 200
    write "UNLOG  GPRMB\r\n"; wait 200
    write "UNLOG  GPRMC\r\n"; wait 200
    write "LOG  GPVTG ONTIME 1 0 NOHOLD\r\n"; wait 200
    write "UNLOG  GPZDA\r\n"; wait 200
    write "UNLOG  GPALM\r\n"; wait 200
    )";
constexpr auto kGgaOnlyNmea = R"(
    write "UNLOG  GPALM\r\n"; wait 200
    write "LOG  GPGGA ONTIME 1 0 NOHOLD\r\n"; wait 200
    write "UNLOG  GPGGALONG\r\n"; wait 200
    write "UNLOG  GPGGARTK\r\n"; wait 200
    write "UNLOG  GPGLL\r\n"; wait 200
    write "UNLOG  GPGRS\r\n"; wait 200
    write "UNLOG  GPGSA\r\n"; wait 200
    write "UNLOG  GPGST\r\n"; wait 200
    write "UNLOG  GPGSV\r\n"; wait 200
    write "UNLOG  GPRMB\r\n"; wait 200
    write "UNLOG  GPRMC\r\n"; wait 200
    write "UNLOG  GPVTG\r\n"; wait 200
    write "UNLOG  GPZDA\r\n"; wait 200)";

std::string Source(const std::string& first, const std::string& second, const std::string& third) {
  std::string steps = R"(
      write "UNDULATION TABLE\r\n"; wait 100
      write "DATUM WGS84\r\n"; wait 100
      )";
  for (const std::string& line : {first, second, third})
    if (!line.empty()) steps += "write \"" + line + "\\r\\n\"; wait 100\n";
  return steps + R"(write "SAVECONFIG\r\n"; wait 2000
      )";
}
const std::string kSourceAuto =
    Source("RTKSOURCE AUTO ANY", "PSRDIFFSOURCE AUTO ANY", "SBASCONTROL ENABLE AUTO");

std::string RawOn(int nPeriod) {
  return "write \"LOG RANGEB ONTIME " + std::to_string(nPeriod) + R"(\r\n"; wait 100
      write "LOG RAWEPHEMB ONCHANGED\r\n"; wait 100
      write "LOG ALMANACB ONCHANGED\r\n"; wait 100
      write "SAVECONFIG\r\n"; wait 1000
      )";
}
const std::string kRawOff = R"(
      write "UNLOG RANGEB\r\n"; wait 100
      write "UNLOG RAWEPHEMB\r\n"; wait 100
      write "UNLOG ALMANACB\r\n"; wait 100
      write "SAVECONFIG\r\n"; wait 1000
      )";

std::string Reset(const std::string& wait) {
  return R"(write "RESET 0\r\n"; )" + wait + " 10000" + kFullNmea + kSourceAuto + "wait 3000\n";
}

constexpr auto kPosition = "$GPGGA,120000.00,4807.0380,N,01131.0000,E,1,08,0.9,545.4,M,47.0,M,,";
constexpr auto kMotion = "$GPVTG,84.4,T,,M,22.4,N,41.5,K";

}  // namespace

TEST_F(GsrDriver, SetsOutputMaskDatumAndTuning) {
  Check({
      {&Cgsr2650lb::SetDefaultNMEA, kFullNmea},
      {&Cgsr2650lb::SetGgaOnlyNMEA, kGgaOnlyNmea},
      {[](auto& r) { r.SetSatElevMask(10); }, R"(
          write "ECUTOFF 10\r\n"; wait 200
          write "SAVECONFIG\r\n"; wait 500)"},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_MANUAL, "290.5", "100"); }, R"(
          write "RTKSOURCE AUTO ANY\r\n"; wait 100
          write "PSRDIFFSOURCE AUTO ANY\r\n"; wait 100
          write "SBASCONTROL ENABLE AUTO\r\n"; wait 100)"},
      {&Cgsr2650lb::SendCorrection, R"(
          write "USERDATUM 6378137 298.257222101 -.9910 1.9072 .5129 .000000125033 .0000000467845 .0000000565292 0 \r\n"; wait 100
          write "datum user\r\n"; wait 100
          write "UNDULATION USER -1.09\r\n"; wait 100
          write "SAVECONFIG\r\n"; wait 1000)"},
      {[](auto& r) { r.SetLbandFrequency(0, 1200); }, R"(
          write "RTKSOURCE OMNISTAR ANY\r\n"; wait 800
          write "SAVECONFIG\r\n"; wait 2000)"},
      {[](auto& r) { r.SetLbandFrequency(1.5, 1200); }, R"(
          write "ASSIGNOMNI USER 1500 1200\r\n"; wait 800
          write "SAVECONFIG\r\n"; wait 2000)"},
      {[](auto& r) { r.SetLbandFrequency(1535.1375, 600); }, R"(
          write "ASSIGNOMNI USER 1535138 600\r\n"; wait 800
          write "SAVECONFIG\r\n"; wait 2000)"},
      {[](auto& r) { r.DgpsStatusMsg(true); }, ""},
      {[](auto& r) { r.DgpsStatusMsg(false); }, ""},
  });
}

TEST_F(GsrDriver, TunesCdgpsInWholeMegahertzUpTo3000) {
  const auto tune = [](double f) { return [f](auto& r) { r.ChangeCDGPS_Freq(f); }; };
  const auto tuned = [](const std::string& kHz) {
    return "write \"ASSIGNLBAND CDGPS " + kHz + R"( 4800\r\n"; wait 100; write "SAVECONFIG\r\n"; wait 1000)";
  };
  const std::string usual = tuned("1547000"), lowest = tuned("0"), highest = tuned("3000000");
  Check({
      {tune(1547.5), usual},
      {tune(0), lowest},
      {tune(3000), highest},
      {tune(3000.5), ""},
      {tune(-1), ""},
      {tune(std::numeric_limits<double>::quiet_NaN()), ""},
  });
}

TEST_F(GsrDriver, AsksForTheLogThatAnswers) {
  constexpr auto kMask = R"(write "LOG COM2 ECUTOFFA ONCE\r\n"; wait 100)";
  constexpr auto kOmniStar = R"(
      write "LOG OMNIINFOA ONCE\r\n"; wait 200
      write "LOG OMNISTATA ONCE\r\n"; wait 200
      write "LOG OMNIHPPOSA ONCE\r\n"; wait 200)";
  Check({
      {&Cgsr2650lb::QuerySatElevMask, kMask},
      {&Cgsr2650lb::QueryGpsSettings, kMask},
      {&Cgsr2650lb::QueryNmeaActive, R"(write "LOG LOGLISTA ONCE\r\n"; wait 200)"},
      {&Cgsr2650lb::QueryBeacon, R"(write "LOG COM2 RXCONFIGA ONCE\r\n"; wait 100)"},
      {&Cgsr2650lb::QueryDgpsMode, R"(
          write "LOG COM2 RTKSOURCEA ONCE\r\n"; wait 100
          write "LOG COM2 SBASCONTROLA ONCE\r\n"; wait 100
          write "LOG COM2 PSRDIFFSOURCEA ONCE\r\n"; wait 100)"},
      {&Cgsr2650lb::QueryWAAS, R"(write "LOG WAAS1A ONCE\r\n"; wait 200)"},
      {&Cgsr2650lb::QueryOmniStar, kOmniStar},
      {&Cgsr2650lb::QueryLbandSatellites, kOmniStar},
  });
}

TEST_F(GsrDriver, HasSixSources) {
  const auto to = [](int mode) { return [mode](auto& r) { r.SetDgpsMode(static_cast<DgpsMode>(mode)); }; };
  const std::string none = Source("RTKSOURCE NONE", "PSRDIFFSOURCE NONE", "SBASCONTROL DISABLE AUTO"),
                    lband = Source("RTKSOURCE OMNISTAR", "PSRDIFFSOURCE NONE", "SBASCONTROL DISABLE AUTO"),
                    waas = Source("RTKSOURCE NONE", "PSRDIFFSOURCE NONE", "SBASCONTROL ENABLE AUTO"),
                    cdgps = Source("PSRDIFFSOURCE CDGPS", "RTKSOURCE NONE", "SBASCONTROL DISABLE AUTO"),
                    omnistar = Source("PSRDIFFSOURCE OMNISTAR", "RTKSOURCE NONE", "SBASCONTROL DISABLE AUTO"),
                    unknown = Source("", "", "");
  Check({
      {to(DGPS_MODE_NONE), none},
      {to(DGPS_MODE_BEACON), kSourceAuto},
      {to(DGPS_MODE_LBAND), lband},
      {to(DGPS_MODE_WAAS), waas},
      {to(DGPS_MODE_CDGPS), cdgps},
      {to(DGPS_MODE_OMNISTAR), omnistar},
      {to(6), unknown},
      {to(-1), unknown},
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
  for (const auto query : {&Cgsr2650lb::QueryDgpsMode, &Cgsr2650lb::QueryBeacon}) {
    receiver.SetDgpsMode(DGPS_MODE_CDGPS);
    (receiver.*query)();
    EXPECT_FALSE(FeedSentence(kMotion));
    ASSERT_TRUE(FeedSentence(kPosition));
    EXPECT_FALSE(Last().m_Status.m_bDgpsModeValid);
    EXPECT_EQ(Last().m_Status.m_nDgpsMode, DGPS_MODE_NONE);
  }
  receiver.SetDgpsMode(DGPS_MODE_CDGPS);
  receiver.QuerySatElevMask();
  EXPECT_FALSE(FeedSentence(kMotion));
  ASSERT_TRUE(FeedSentence(kPosition));
  EXPECT_EQ(Last().m_Status.m_nDgpsMode, DGPS_MODE_CDGPS) << "the mask alone was asked for";

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
  const auto enable = [](bool on) { return [on](auto& r) { return r.EnablePostProcessing(on); }; };
  const auto interval = [](double seconds) {
    return [seconds](auto& r) { return r.SetRawDataOutputInterval(seconds); };
  };
  const auto expect = [this](auto operation, const std::string& steps) {
    EXPECT_EQ(Steps(operation), Joined(steps + "result true"));
  };
  expect(enable(false), "");
  expect(interval(4.0), kRawOff);  // off: the interval is not kept
  expect(enable(true), RawOn(1));
  expect(enable(true), "");
  expect(interval(1.9), "");
  expect(interval(2.0), RawOn(2));
  expect(interval(2.9), "");
  EXPECT_EQ(Steps(&Cgsr2650lb::Initialize), Joined(kFullNmea + std::string("result true")));
  expect(enable(false), "");  // a start takes the logs for off
  expect(enable(true), RawOn(1));
  EXPECT_EQ(Steps(&Cgsr2650lb::Suspend), Joined(kRawOff));
  expect(enable(true), "");  // closed
}

TEST_F(GsrDriver, ResetsAndSetsItselfUpAgain) {
  const auto reset = [](bool bWait) { return [bWait](auto& r) { return r.ResetAll(bWait); }; };
  EXPECT_EQ(Steps(reset(false)), Joined(Reset("wait") + "result true"));
  EXPECT_EQ(Steps(reset(true)), Joined(Reset("wait-ack") + "result false"));
  Acknowledge();
  EXPECT_EQ(Steps(reset(true)), Joined(Reset("wait-ack") + "result true"));
  Close();
  EXPECT_EQ(Steps(reset(false)), "result false");
}

TEST_F(GsrDriver, IsSetUpAtEveryStart) {
  EXPECT_EQ(Steps(&Cgsr2650lb::Initialize), Joined(kFullNmea + std::string("result true")));
  Unplug();
  EXPECT_EQ(Steps(&Cgsr2650lb::Initialize), "result false");
}
