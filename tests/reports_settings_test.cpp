#include <array>
#include <optional>

#include "gpsengine/platform/trace.h"
#include "tests/support/receivertest.h"

// The reports that read settings back: of beacon receivers, the PAR listing, Starlink and the Sokkia Axis.

namespace {

class SettingsReport : public ReceiverTest<> {
 protected:
  /// The status of the record that goes out next, and whether it was this sentence that sent it.
  CGPSStatusData StatusAfter(std::string_view message, bool accepted) {
    const std::size_t before = Published();
    EXPECT_EQ(Feed(message), accepted) << message;
    EXPECT_EQ(Published(), before + (accepted ? 1 : 0)) << message;
    if (!accepted) Feed("$PASHR,ACK*3D\r\n");
    return Last().m_Status;
  }
  CGPSStatusData Accepted(std::string_view message) { return StatusAfter(message, true); }
  CGPSStatusData Refused(std::string_view message) { return StatusAfter(message, false); }
};

using Seven = std::array<NmeaMsgStatus, 7>;
Seven Sentences(const CGPSStatusData& s) {
  return {s.m_nNmeaGGA, s.m_nNmeaGSA, s.m_nNmeaZDA, s.m_nNmeaGLL, s.m_nNmeaVTG, s.m_nNmeaSAT, s.m_nNmeaGSV};
}
constexpr auto kOn = NMEA_MSG_ON, kOff = NMEA_MSG_OFF, kNone = NMEA_MSG_NO_REPORT;

TEST_F(SettingsReport, BeaconStatusReachesTheHostInOneRecord) {
  for (const char* tag : {"$CRMSS", "$GPMSS"}) {
    const auto status = Accepted(WithChecksum(std::string(tag) + ",45,20,304.5,200"));
    EXPECT_TRUE(status.m_bBeaconStatusValid);
    EXPECT_EQ(status.m_nBeaconSignalStrength, 45);
    EXPECT_EQ(status.m_nBeaconSNR, 20);
    EXPECT_EQ(status.m_dBeaconFrequency, 304.5);
    EXPECT_EQ(status.m_nBeaconBitRate, 200);
    const auto next = Accepted("$PASHR,ACK*3D\r\n");
    EXPECT_FALSE(next.m_bBeaconStatusValid);
    EXPECT_EQ(next.m_nBeaconSNR, 20);
  }
  const auto status = Refused(WithChecksum("$CRMSS,46,21,305.5"));
  EXPECT_FALSE(status.m_bBeaconStatusValid);
  EXPECT_EQ(status.m_nBeaconSignalStrength, 46);
  EXPECT_EQ(status.m_nBeaconSNR, 21);
  EXPECT_EQ(status.m_dBeaconFrequency, 305.5);
  EXPECT_EQ(status.m_nBeaconBitRate, 200);
}

TEST_F(SettingsReport, BeaconTuningKnowsAutomaticAndManualAlone) {
  constexpr struct {
    const char* sentence;
    bool automatic;
  } kReports[] = {{"$CRMSK,304.5,A", true},
                  {"$CRMSK,304.5,X", true},
                  {"$GPMSK,304.5,M,100", false},
                  {"$CRMSK,304.5,a", false},
                  {"$CRMSK,,A", true}};
  for (const auto& report : kReports) {
    const auto status = Accepted(WithChecksum(report.sentence));
    EXPECT_TRUE(status.m_bBeaconTuneValid);
    EXPECT_EQ(status.m_bBeaconAutoTune, report.automatic) << report.sentence;
  }
  EXPECT_FALSE(Refused(WithChecksum("$CRMSK,304.5")).m_bBeaconTuneValid);
}

TEST_F(SettingsReport, ParPositionMode) {
  auto status = Accepted("PMD:1 ALT:+0123.45 PDP:40 HDP:04 VDP:05\r\n");
  EXPECT_TRUE(status.m_bPositionModeValid);
  EXPECT_EQ(status.m_nPositionMode, 1);
  EXPECT_EQ(status.m_dFixedAltitude, 123.45);
  EXPECT_EQ(status.m_nPDOPMask, 40);
  EXPECT_EQ(status.m_nHDOPMask, 4);
  EXPECT_EQ(status.m_nVDOPMask, 5);

  status = Refused("PMD:2 ALT:-7.5 PDP:41 HDP:05\r\n");
  EXPECT_EQ(status.m_nPositionMode, 2);
  EXPECT_EQ(status.m_nHDOPMask, 5);
  EXPECT_EQ(status.m_nVDOPMask, 5);
  status = Refused("PMD:3 ALT:high PDP:42\r\n");
  EXPECT_EQ(status.m_nPositionMode, 3);
  EXPECT_EQ(status.m_dFixedAltitude, -7.5);
  EXPECT_EQ(status.m_nPDOPMask, 41);
}

TEST_F(SettingsReport, ParIntervalIsThereOnlyWhenReported) {
  EXPECT_EQ(Accepted("PER:001.50\r\n").m_dOutputInterval, 1.5);
  EXPECT_EQ(Refused("PER:abc\r\n").m_dOutputInterval, -1.0);
}

TEST_F(SettingsReport, ParElevationMask) {
  auto status = Accepted("PEM:05 SAV:Y\r\n");
  EXPECT_TRUE(status.m_bElevationMaskValid);
  EXPECT_TRUE(status.m_bMaskSaveValid);
  EXPECT_EQ(status.m_nElevationMask, 5);
  EXPECT_TRUE(status.m_bMaskSaved);
  EXPECT_FALSE(Accepted("PEM:05 SAV:N\r\n").m_bMaskSaved);
  status = Refused("PEM:07\r\n");
  EXPECT_FALSE(status.m_bElevationMaskValid);
  EXPECT_EQ(status.m_nElevationMask, 7);
  EXPECT_EQ(Refused("PEM:x SAV:Y\r\n").m_nElevationMask, 7);
}

TEST_F(SettingsReport, ParSentencesAreReadByPlaceBehindPairsOfSpaces) {
  CString listing("PRTA:  9600 1.0 A ON -- OFFICE ONX -- -- ON OFF -- --  -- ON\r\n");
  ASSERT_TRUE(receiver.Parse(listing));
  window.Drain();
  EXPECT_TRUE(Last().m_Status.m_bNmeaStatusValid);
  EXPECT_EQ(Sentences(Last().m_Status), (Seven{kOff, kOn, kOn, kOn, kOn, kOff, kNone}));
  EXPECT_EQ(listing, "PRTA: 9600 1.0 A ON -- OFFICE ONX -- -- ON OFF -- -- -- ON\r\n");

  for (const char* bad :
       {"PRTA: 9600 1.0 A OFF -- -- ON\r\n",              // "--" where a state belongs
        "PRTA:   9600 1.0 A OFF -- OFF ON -- -- ON\r\n",  // three spaces: all is one place on
        "PRTA: 9600 1.0 A OFF -- on\r\n"}) {
    const auto status = Refused(bad);
    EXPECT_FALSE(status.m_bNmeaStatusValid) << bad;
    EXPECT_EQ(status.m_nNmeaGGA, kNone) << bad;
  }
  EXPECT_EQ(Refused("PRTA: 9600 1.0 A OFF -- ON\r\n").m_nNmeaGGA,
            kOn);  // kept, though the line ends too soon
}

TEST_F(SettingsReport, SentenceThatCannotBeReadIsNamedInTheTrace) {
  if (!kTraceBuilt) GTEST_SKIP() << "a release build traces nothing";
  CString trace;
  SetTraceHandler([&](const CString& text) { trace = text; });
  const std::pair<std::string, const char*> kBad[] = {
      {WithChecksum("$CRMSS,x"), "Invalid CRMSS string.\n"},
      {WithChecksum("$CRMSK,300"), "Invalid CRMSK string.\n"},
      {"PEM:x", "Invalid PAR PEM string.\n"},
      {"PRTA: 1", "Invalid PAR PRTA string.\n"},
      {WithChecksum("$PMCAG"), "Invalid PMCAG string.\n"},
      {"$>JSHOW,DIFF", "Invalid JSHOW string.\n"},
      {"$PASHR,SAT,x", "Invalid PASHR,SAT string.\n"},
  };
  for (const auto& [sentence, text] : kBad) {
    EXPECT_FALSE(Feed(sentence));
    EXPECT_EQ(trace, text) << sentence;
  }
  SetTraceHandler({});
}

TEST_F(SettingsReport, StarlinkRatesSayWhatIsOn) {
  const auto status = Accepted(WithChecksum("$PSLIR,PAR,NMEA,GGA:1.0,GSA:0,VTG:5,GLL:-1"));
  EXPECT_TRUE(status.m_bNmeaStatusValid);
  EXPECT_EQ(Sentences(status), (Seven{kOn, kOff, kNone, kOff, kOn, kNone, kNone}));

  const auto bad = Refused(WithChecksum("$PSLIR,PAR,NMEA,GGA:1.0,GSA:x,VTG:5"));
  EXPECT_FALSE(bad.m_bNmeaStatusValid);
  EXPECT_EQ(Sentences(bad), (Seven{kOn, kNone, kNone, kNone, kNone, kNone, kNone}));
}

TEST_F(SettingsReport, ElevationMaskOfStarlinkAndAxis) {
  constexpr struct {
    const char* sentence;
    std::optional<int> mask;
  } kReports[] = {
      {"$PSLIR,PAR,MODE,ELM:10", 10}, {"$PSLIR,PAR,MODE,FOO:1", 10},          {"$PSLIR,PAR,MODE,ELM:x", {}},
      {"$PMCAG,908,1,2,3,4,7.9", 7},  {"$PMCAG,908,15,,,,12,,,,,,,,,,,", 12}, {"$PMCAG,907,1,2,3,4,9.9", {}},
      {"$PMCAG,908,1,2,3,4", {}},     {"$PMCAG,908,1,2,3,4,1e300", {}}};
  int mask = 0;
  for (const auto& report : kReports) {
    const auto status = StatusAfter(WithChecksum(report.sentence), report.mask.has_value());
    EXPECT_EQ(status.m_bElevationMaskValid, report.mask.has_value()) << report.sentence;
    mask = report.mask.value_or(mask);
    EXPECT_EQ(status.m_nElevationMask, mask) << report.sentence;
  }
}

}  // namespace
