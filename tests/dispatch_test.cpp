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
  // By the number of their kind. Up to the gap the checksum counts.
  std::istringstream tags(
      "$GPALM $GPGGA $INGGA $GPGLL $GPGSA $GPGSV $GPRMC $GPVTG $GPZDA $CRMSS $CRMSK $PSLIR,PAR,NMEA "
      "$PSLIR,PAR,MODE $PMCAG - PEM: PMD: PRTA: PER: $PASHR $>JSHOW $>JI $>JGEO $RD1 $BIN #LOGLISTA "
      "#RXCONFIGA #ECUTOFF #OMNIINFO #OMNISTAT #OMNIHPPOS #WAAS1 #RTKSOURCE #SBASCONTROL #PSRDIFFSOURCE");
  EXPECT_EQ(TypeOf("PMD:"), GPS_STRING_PMD) << "and nothing after it";
  int recognised = 1, wrong = 0;
  const auto expect = [&](const std::string& head, int type) {
    const bool checked = type <= GPS_STRING_PMCAG;
    EXPECT_EQ(TypeOf(checked ? WithChecksum(head + ",1,2") : head + "x,no checksum\r\n"), type) << head;
    EXPECT_EQ(TypeOf(head + ",1,2*00\r\n"), checked ? GPS_STRING_NONE : type) << head;
    recognised += 2;
    wrong += checked;
  };
  std::string tag;
  for (int type = 1; tags >> tag; ++type) {
    if (tag != "-") expect(tag, type);
    if (tag.starts_with("$GP")) expect("$GN" + tag.substr(3), type);
    if (tag.starts_with("$CR")) expect("$GP" + tag.substr(3), type);
  }
  EXPECT_EQ(receiver.GetChecksumErrors(), wrong);
  EXPECT_EQ(receiver.GetSentencesRecognised(), recognised);
  EXPECT_EQ(TypeOf("\xAA\x44\x12\x1C"), GPS_STRING_AXIS4_BIN);
  for (const char* other :
       {"", "$", "$GP", "$GPGG", "$gpgga,1,2", "GPGGA,1", "$GLGSV,1", "#LOGLIS", "$WAAS1A", "\xAA\x44"})
    EXPECT_EQ(TypeOf(other), GPS_STRING_NONE) << other;
  EXPECT_EQ(receiver.GetSentencesRecognised(), recognised) << "none of those";
}

TEST_F(DispatchTest, TestsTheChecksum) {
  for (const char* good : {"*47\r\n", "*FF47\r\n"})
    EXPECT_EQ(TypeOf(kGga + std::string(good)), GPS_STRING_GGA);
  for (const char* good : {"$GPGGA,-,*7b\r\n", "$GPGGA,-,{*\r\n"})
    EXPECT_EQ(TypeOf(good), GPS_STRING_GGA) << good;
  EXPECT_NE(TypeOf("$GPGGA,,,*7A\r\n"), TypeOf("$GPGGA,,,*7:\r\n"));
  for (const char* bad : {"*47F\r\n", "\r\n", "*\r\n", "*48\r\n", "*\x80\r\n"})
    EXPECT_EQ(TypeOf(kGga + std::string(bad)), GPS_STRING_NONE) << bad;
  EXPECT_FALSE(Feed(std::string(kGga) + "*48\r\n"));
  EXPECT_EQ(Published(), 0u);
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
  for (const bool bForget : {true, false}) {
    bForget ? receiver.ForgetSatelliteSentences() : static_cast<void>(receiver.Initialize());
    EXPECT_TRUE(Feed(report));
    FeedSentence(kGsv);
    FeedSentence(kGsa);
    EXPECT_FALSE(Feed(report));
  }
}

TEST_F(DispatchTest, TakesAPortPromptOffTheHead) {
  CString message = "garbage[COM1]#LOGLISTA,COM1;GPGGA*12\r\n";
  EXPECT_TRUE(receiver.Parse(message));
  EXPECT_EQ(message, "#LOGLISTA,COM1;GPGGA*12\r\n");
  CString prompt = "[COM";
  EXPECT_FALSE(receiver.Parse(prompt));
  EXPECT_EQ(prompt, "");
}

// A receiver class of a host's own works with what it inherits, under its names.
class Derived : public COtherGps {
 public:
  CString GetName() override { return "Derived"; }
  bool Publish() {
    m_nPortNumber += 1;
    m_wNmeaBits |= 1u << GPS_STRING_GGA;
    m_AlternateSignalTable[2] = UDF_SIGNAL_MANUAL;
    m_bAlternateSignalTable = true;
    m_Notification.m_LastPosition.m_bPositionValid = true;
    CGPSData last;
    CString strBeacon = "$CRMSS,52,21,310.0,100", strUnclaimed = "$PGRME,12.0,M";
    if (!ProcessCRMSS(strBeacon) || !ProcessProprietary(strUnclaimed) || ProcessPASHR_PBN(nullptr))
      return false;
    {
      const RecordLock lock;
      m_GPSData.m_Status.m_nBeaconSNR *= 2;
    }
    return IsChecksumOK("$*00") && !IsChecksumOK("*$*00") && IsChecksumOK("x$A*41") &&
           IsChecksumOK("$A*0041") && !IsChecksumOK("$A*00041") && !m_bMonitorNmea &&
           GetLastGPSPositionData(last) && m_Notifications.empty() && PostNewData(true);
  }
  /// Opens a port that was set to anything but a plain line.
  DCB Open() {
    m_Port.SetFlowControl(7);
    m_Port.SetParity(2);
    m_Port.SetStopBits(2);
    SetupReceiver(1, 0, 0.0, "", false);
    EXPECT_TRUE(OpenPort());
    DCB state;
    EXPECT_TRUE(GetCommState(GetPortHandle(), &state));
    return state;
  }
};

TEST(DerivedReceiver, WorksWithWhatItInherits) {
  const CRehearsal line;
  CWinApp app{"gpsengine-test"};
  HostWindow window;
  app.SetMainWnd(&window);
  Derived receiver;
  receiver.SetupReceiver(4, 0, 0.0, "", true);
  EXPECT_TRUE(receiver.Publish());
  EXPECT_EQ(receiver.GetPortNumber(), 5);
  EXPECT_TRUE(receiver.HaveGotNmea(GPS_STRING_GGA));
  CString fix = WithChecksum("$GPGGA,123519,4807.038,N,01131.000,E,2,08,0.9,545.4,M,,,,").c_str();
  EXPECT_TRUE(receiver.Parse(fix));
  window.Drain();
  ASSERT_EQ(window.records.size(), 2u);
  EXPECT_EQ(window.records[0].m_Status.m_nBeaconSNR, 42);
  EXPECT_EQ(window.records[1].m_nSignalType, UDF_SIGNAL_MANUAL);
  CRuntimeClass* const record = receiver.GetRuntimeClass();
  EXPECT_EQ(record, &COtherGps::classCOtherGps) << "it has none of its own";
  const DCB state = receiver.Open();
  EXPECT_EQ(state.Parity + state.StopBits + state.fOutX + state.fOutxCtsFlow + state.fOutxDsrFlow, 0);
  EXPECT_EQ(state.ByteSize, 8);
}

TEST_F(DispatchTest, RemembersWhichKindsHaveComeWhileItMonitors) {
  EXPECT_FALSE(FeedSentence("$GPRMC,1,2"));
  EXPECT_FALSE(receiver.HaveGotNmea(GPS_STRING_RMC));
  receiver.MonitorNmea(true);
  EXPECT_TRUE(receiver.MonitoringNmea());
  FeedSentence("$GPRMC,1,2");
  EXPECT_TRUE(receiver.HaveGotNmea(GPS_STRING_RMC));
  EXPECT_FALSE(receiver.HaveGotNmea(GPS_STRING_WAAS1) || receiver.HaveGotNmea(GPS_STRING_ALM));
  Feed("nothing of the kind");
  Feed("#RTKSOURCEA,COM1");
  EXPECT_TRUE(receiver.HaveGotNmea(GPS_STRING_NONE));
  EXPECT_TRUE(receiver.HaveGotNmea(GPS_STRING_WAAS1) && receiver.HaveGotNmea(GPS_STRING_ALM));
  receiver.MonitorNmea(true);
  EXPECT_FALSE(receiver.HaveGotNmea(GPS_STRING_RMC));
  EXPECT_FALSE(COtherGps().MonitoringNmea());
}

// What goes out, and with what.
const char kFix[] = "$GPGGA,123519,4807.038,N,01131.000,E,1,07,0.9,545.4,M,46.9,M,,";

struct PublicationTest : ReceiverTest<> {
  void Vtg(const char* kmh) { FeedSentence(std::string("$GPVTG,90,T,,M,,N,") + kmh + ",K"); }
};

TEST_F(PublicationTest, ClearsTheFlagsOfAPublishedPositionAndKeepsItsValues) {
  Vtg("36.0");
  line.SetUnixSeconds(1'800'000'000);
  EXPECT_TRUE(FeedSentence(kFix));
  EXPECT_EQ(Last().m_Time.GetTime(), 1'800'000'000);
  EXPECT_TRUE(Last().m_bVelocityValid);
  EXPECT_TRUE(FeedSentence("$GPGSV,1,1,05,04,40,083,46,12,07,344,39"));
  EXPECT_TRUE(Find(4) != nullptr && Find(12) != nullptr) << "each in a place of its own";
  EXPECT_FALSE(Last().m_bPositionValid);
  EXPECT_TRUE(Last().m_bSatellitesComplete);
  EXPECT_EQ(Last().m_dAltitude, 545.4);
  EXPECT_EQ(Last().m_nSatellitesInView, 7);
  EXPECT_TRUE(FeedSentence("$GPGSV,1,1,09,04,40,083,46"));
  EXPECT_EQ(Last().m_nSatellitesInView, 9);
}

TEST_F(PublicationTest, ShowsNoMotionBelowAWalkAndKeepsItInTheWorkingRecord) {
  Vtg("1.0");  // 0.28 m/s
  FeedSentence(kFix);
  EXPECT_EQ(Last().m_dSpeed, 0.0);
  EXPECT_EQ(Last().m_dHeading, 0.0);
  FeedSentence("$GPGSV,1,1,05,04,40,083,46");
  EXPECT_NEAR(Last().m_dSpeed, 0.2778, 1e-4) << "the rule is for positions";
  Vtg("1.08");
  FeedSentence(kFix);
  EXPECT_DOUBLE_EQ(Last().m_dSpeed, 0.3);
}

TEST_F(PublicationTest, KeepsNoLastRecordOfAnyKind) {
  CGPSData last;
  CGPSDataRaw raw;
  last.m_dLatitude = raw.m_dLatitude = 1.0;
  EXPECT_FALSE(receiver.GetLastGPSPositionData(last));
  receiver.GetLastGPSRawData(raw);
  EXPECT_EQ(last.m_dLatitude + raw.m_dLatitude, 0.0);
}

}  // namespace
