// What a message is taken for, and what follows from it.
#include "tests/support/receivertest.h"
#include "tests/support/wirebuilder.h"

namespace {

const char kGga[] = "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,";
const char kGsa[] = "$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1";
const char kGsv[] = "$GPGSV,1,1,02,04,40,083,46,05,17,308,41";

struct DispatchTest : ReceiverTest<> {
  GPSStringType TypeOf(std::string_view message) {
    return receiver.GetGPSStringType(CString(message.data(), static_cast<int>(message.size())));
  }
};

TEST_F(DispatchTest, KnowsEveryTag) {
  const std::pair<GPSStringType, std::vector<std::string>> checked[] = {
      {GPS_STRING_ALM, {"$GPALM", "$GNALM"}},
      {GPS_STRING_GGA, {"$GPGGA", "$GNGGA"}},
      {GPS_STRING_GLL, {"$GPGLL", "$GNGLL"}},
      {GPS_STRING_GSA, {"$GPGSA", "$GNGSA"}},
      {GPS_STRING_GSV, {"$GPGSV", "$GNGSV"}},
      {GPS_STRING_RMC, {"$GPRMC", "$GNRMC"}},
      {GPS_STRING_VTG, {"$GPVTG", "$GNVTG"}},
      {GPS_STRING_ZDA, {"$GPZDA", "$GNZDA"}},
      {GPS_STRING_MSS, {"$CRMSS", "$GPMSS"}},
      {GPS_STRING_MSK, {"$CRMSK", "$GPMSK"}},
      {GPS_STRING_INGGA, {"$INGGA"}},
      {GPS_STRING_PMCAG, {"$PMCAG"}},
      {GPS_STRING_PSLIR_NMEA, {"$PSLIR,PAR,NMEA"}},
      {GPS_STRING_PSLIR_MODE, {"$PSLIR,PAR,MODE"}}};
  int recognised = 0;
  for (const auto& [type, tags] : checked) {
    for (const std::string& tag : tags) {
      EXPECT_EQ(TypeOf(WithChecksum(tag + ",1,2")), type) << tag;
      EXPECT_EQ(TypeOf(tag + ",1,2*00\r\n"), GPS_STRING_NONE) << tag;
      recognised += 2;
    }
  }
  EXPECT_EQ(receiver.GetChecksumErrors(), recognised / 2);
  const std::pair<GPSStringType, std::string> unchecked[] = {{GPS_STRING_PEM, "PEM:"},
                                                             {GPS_STRING_PMD, "PMD:"},
                                                             {GPS_STRING_PRTA, "PRTA:"},
                                                             {GPS_STRING_PER, "PER:"},
                                                             {GPS_STRING_PASHR, "$PASHR"},
                                                             {GPS_STRING_JSHOW, "$>JSHOW"},
                                                             {GPS_STRING_JI, "$>JI"},
                                                             {GPS_STRING_JGEO, "$>JGEO"},
                                                             {GPS_STRING_RD1, "$RD1"},
                                                             {GPS_STRING_BIN, "$BIN"},
                                                             {GPS_STRING_LOGLIST, "#LOGLISTA"},
                                                             {GPS_STRING_RXCONFIG, "#RXCONFIGA"},
                                                             {GPS_STRING_ECUTOFF, "#ECUTOFF"},
                                                             {GPS_STRING_OMNIINFO, "#OMNIINFO"},
                                                             {GPS_STRING_OMNISTAT, "#OMNISTAT"},
                                                             {GPS_STRING_OMNIHPPOS, "#OMNIHPPOS"},
                                                             {GPS_STRING_WAAS1, "#WAAS1"},
                                                             {GPS_STRING_RTKSOURCE, "#RTKSOURCE"},
                                                             {GPS_STRING_SBASCONTROL, "#SBASCONTROL"},
                                                             {GPS_STRING_PSRDIFFSOURCE, "#PSRDIFFSOURCE"}};
  for (const auto& [type, tag] : unchecked) EXPECT_EQ(TypeOf(tag + "x,no checksum\r\n"), type) << tag;
  recognised += static_cast<int>(std::size(unchecked));
  EXPECT_EQ(TypeOf("\xAA\x44\x12\x1C"), GPS_STRING_AXIS4_BIN);
  for (const char* other :
       {"", "$", "$GP", "$GPGG", "$gpgga,1,2", "GPGGA,1", "$GLGSV,1", "#LOGLIS", "\xAA\x44"})
    EXPECT_EQ(TypeOf(other), GPS_STRING_NONE) << other;
  EXPECT_EQ(receiver.GetSentencesRecognised(), recognised);
}

TEST_F(DispatchTest, TestsTheChecksum) {
  for (const char* good : {"*47\r\n", "*FF47\r\n"})
    EXPECT_EQ(TypeOf(kGga + std::string(good)), GPS_STRING_GGA);
  EXPECT_EQ(TypeOf("$GPGGA,-,*7b\r\n"), GPS_STRING_GGA);
  for (const char* bad : {"*47F\r\n", "\r\n", "*\r\n", "*48\r\n"})
    EXPECT_EQ(TypeOf(kGga + std::string(bad)), GPS_STRING_NONE) << bad;
  EXPECT_FALSE(Feed(std::string(kGga) + "*48\r\n"));
  EXPECT_EQ(Published(), 0u);
}

TEST_F(DispatchTest, PublishesBehindAPositionAndBehindAWholeGroupOfSatellites) {
  EXPECT_TRUE(FeedSentence(kGga));
  EXPECT_EQ(Published(), 1u);
  EXPECT_FALSE(FeedSentence(kGsa));
  EXPECT_FALSE(FeedSentence("$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K"));
  EXPECT_FALSE(FeedSentence("$GPGSV,3,1,09,04,40,083,46"));
  EXPECT_FALSE(FeedSentence("$GPGSV,3,2,09,05,40,083,46"));
  EXPECT_EQ(Published(), 1u);
  EXPECT_TRUE(FeedSentence("$GPGSV,3,3,09,06,40,083,46"));
  EXPECT_EQ(Published(), 2u);
  EXPECT_FALSE(FeedSentence("$GPRMC,1,2"));
  EXPECT_FALSE(FeedSentence("$GPZDA,1,2"));
  EXPECT_EQ(Published(), 2u);
}

TEST_F(DispatchTest, KeepsASentenceOfAMakeThatNoDecoderClaimsForOneRecord) {
  const std::pair<std::size_t, bool> lengths[] = {
      {9, false}, {82, true}, {79, true}, {10, true}, {83, false}};
  for (const auto& [length, kept] : lengths) {
    const std::string sentence = "$PGRME" + std::string(length - 6, '\xE9');
    EXPECT_EQ(Feed(sentence), kept) << length;
    if (!kept) continue;
    EXPECT_TRUE(Last().m_bProprietaryValid);
    std::string expected = sentence.substr(0, 79);
    expected.resize(79);
    EXPECT_EQ(std::string(Last().m_szProprietary, 79), expected);
  }
  EXPECT_TRUE(FeedSentence(kGga));
  EXPECT_FALSE(Last().m_bProprietaryValid);
  EXPECT_FALSE(Feed("$PABC"));  // five characters
  EXPECT_TRUE(Feed("$PMCAG,908,1,2,3,4,7.9*00\r\n")) << "a report whose checksum fails is one like any other";
  EXPECT_TRUE(Last().m_bProprietaryValid);
}

TEST_F(DispatchTest, LetsAnUnclaimedSentenceTakeThePlaceOfWhatIsUnderWay) {
  FeedSentence(kGsv);
  FeedSentence("$GPVTG,90,T,,M,,N,36,K");
  FeedSentence(kGsa);
  Feed("$PASHR,ACK*3D\r\n");
  ASSERT_TRUE(Last().m_bVelocityValid && Last().m_bDOPValid && Last().m_bSatellitesComplete);
  FeedSentence("$PGRME,12.0,M,18.5,M,22.1,M");
  EXPECT_FALSE(Last().m_bVelocityValid || Last().m_bDOPValid || Last().m_bSatellitesComplete);
}

TEST_F(DispatchTest, TakesAnAcknowledgementAtAnyTime) {
  FeedSentence(kGsa);
  FeedSentence(kGsv);
  window.records.clear();
  EXPECT_TRUE(Feed("$PASHR,ACK*3D\r\n"));
  ASSERT_EQ(Published(), 1u);
  EXPECT_TRUE(Last().m_Status.m_bAck);
  EXPECT_TRUE(FeedSentence(kGga));
  EXPECT_FALSE(Last().m_Status.m_bAck);
}

TEST_F(DispatchTest, DropsReportsOfAReceiverThatSendsStandardSatelliteSentences) {
  const char report[] = "$PASHR,SAT,01,07,200,30,45,U*00\r\n";
  EXPECT_TRUE(Feed(report));
  FeedSentence(kGsa);
  EXPECT_TRUE(Feed(report));
  FeedSentence(kGsv);
  EXPECT_FALSE(Feed(report));
  EXPECT_FALSE(FeedBinary(Mbn{}.Message()));
  EXPECT_EQ(receiver.GetBinaryMessages(), 0);
  EXPECT_TRUE(Feed("$PASHR,ACK*3D\r\n"));
  receiver.Initialize();
  EXPECT_TRUE(Feed(report));
}

TEST_F(DispatchTest, TakesAPortPromptOffTheHead) {
  CString message = "garbage[COM1]#LOGLISTA,COM1;GPGGA*12\r\n";
  EXPECT_TRUE(receiver.Parse(message));
  EXPECT_EQ(message, "#LOGLISTA,COM1;GPGGA*12\r\n");
  CString prompt = "[COM";
  EXPECT_FALSE(receiver.Parse(prompt));
  EXPECT_EQ(prompt, "");
}

TEST_F(DispatchTest, RemembersWhichKindsHaveComeWhileItMonitors) {
  FeedSentence("$GPRMC,1,2");
  EXPECT_FALSE(receiver.HaveGotNmea(GPS_STRING_RMC));
  receiver.MonitorNmea(true);
  EXPECT_TRUE(receiver.MonitoringNmea());
  FeedSentence("$GPRMC,1,2");
  EXPECT_TRUE(receiver.HaveGotNmea(GPS_STRING_RMC));
  EXPECT_FALSE(receiver.HaveGotNmea(GPS_STRING_WAAS1));
  Feed("nothing of the kind");
  EXPECT_TRUE(receiver.HaveGotNmea(GPS_STRING_NONE));
  EXPECT_TRUE(receiver.HaveGotNmea(GPS_STRING_WAAS1));
  receiver.MonitorNmea(false);
  EXPECT_FALSE(receiver.HaveGotNmea(GPS_STRING_RMC));
}

}  // namespace
