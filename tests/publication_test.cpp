#include "tests/support/receivertest.h"

namespace {

const char kGga[] = "$GPGGA,123519,4807.038,N,01131.000,E,1,07,0.9,545.4,M,46.9,M,,";

struct PublicationTest : ReceiverTest<> {
  void Vtg(const char* kmh) { FeedSentence(std::string("$GPVTG,90,T,,M,,N,") + kmh + ",K"); }
};

TEST_F(PublicationTest, ClearsTheFlagsOfAPublishedPositionAndKeepsItsValues) {
  Vtg("36.0");
  line.SetUnixSeconds(1'800'000'000);
  EXPECT_TRUE(FeedSentence(kGga));
  EXPECT_EQ(Last().m_Time.GetTime(), 1'800'000'000);
  EXPECT_TRUE(Last().m_bVelocityValid);
  EXPECT_TRUE(FeedSentence("$GPGSV,1,1,05,04,40,083,46"));
  EXPECT_FALSE(Last().m_bPositionValid);
  EXPECT_TRUE(Last().m_bSatellitesComplete);
  EXPECT_EQ(Last().m_dAltitude, 545.4);
  EXPECT_EQ(Last().m_nSatellitesInView, 7);
  EXPECT_TRUE(FeedSentence("$GPGSV,1,1,09,04,40,083,46"));
  EXPECT_EQ(Last().m_nSatellitesInView, 9);
}

TEST_F(PublicationTest, ShowsNoMotionBelowAWalkAndKeepsItInTheWorkingRecord) {
  Vtg("1.0");  // 0.28 m/s
  FeedSentence(kGga);
  EXPECT_EQ(Last().m_dSpeed, 0.0);
  EXPECT_EQ(Last().m_dHeading, 0.0);
  FeedSentence("$GPGSV,1,1,05,04,40,083,46");
  EXPECT_NEAR(Last().m_dSpeed, 0.2778, 1e-4) << "the rule is for positions";
  Vtg("1.08");
  FeedSentence(kGga);
  EXPECT_DOUBLE_EQ(Last().m_dSpeed, 0.3);
}

TEST_F(PublicationTest, HasOneCallbackAKindOfItsOwn) {
  COtherGps other;
  receiver.AddNotificationCallback(
      GPS_NOTIFY_EPHEMERIS, [](GPSNotificationType, CGPSNotification*, void*) {}, nullptr);
  EXPECT_TRUE(receiver.HasNotificationCallback(GPS_NOTIFY_EPHEMERIS));
  EXPECT_FALSE(other.HasNotificationCallback(GPS_NOTIFY_EPHEMERIS));
  receiver.AddNotificationCallback(GPS_NOTIFY_EPHEMERIS, nullptr, nullptr);
  EXPECT_FALSE(receiver.HasNotificationCallback(GPS_NOTIFY_EPHEMERIS));
}

TEST_F(PublicationTest, KeepsNoLastDataOfItsOwn) {
  FeedSentence(kGga);
  CGPSData data;
  data.m_dLatitude = 1.0;
  EXPECT_FALSE(receiver.GetLastGPSPositionData(data));
  EXPECT_EQ(data.m_dLatitude, 0.0);
  EXPECT_FALSE(receiver.GetLastGPSProprietaryMessage(data));
}

}  // namespace
