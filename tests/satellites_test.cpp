// GSA, GSV and VTG, whichever comes first.

#include "gpsengine/receiver/speedengine.h"
#include "tests/support/receivertest.h"

namespace {

struct SatelliteTest : ReceiverTest<> {
  SatelliteTest() {
    Gsa({101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 112});  // no slot is empty
    Gsa({});
  }
  bool Gsa(std::vector<int> numbers, const char* dilutions = "2.5,1.3,2.1") {
    std::string sentence = "$GPGSA,A,3";
    for (std::size_t i = 0; i < 12; ++i)
      sentence += ',' + (i < numbers.size() ? std::to_string(numbers[i]) : "");
    return FeedSentence(sentence + ',' + dilutions);
  }
  const CGPSData& Table() {
    EXPECT_TRUE(Feed(GgaAt("123519")));
    return Last();
  }
};

TEST_F(SatelliteTest, KeepsWhatGsaSaidOfAnUsedSatelliteThroughGsv) {
  EXPECT_FALSE(Gsa({103, 17}));
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(FeedSentence("$GPGSV,1,1,02,103,40,083,40,20,17,308,30"));
  const CGPSData& data = Table();
  const auto* third = Find(103);
  ASSERT_TRUE(third != nullptr && third->m_bUsed && third->m_bInView && third->m_nSNR == 40);
  EXPECT_DOUBLE_EQ(third->m_dElevation, 40 * kDegree);
  EXPECT_DOUBLE_EQ(third->m_dAzimuth, 83 * kDegree);
  EXPECT_FALSE(Find(20)->m_bUsed);
  EXPECT_FALSE(Find(17)->m_bInView) << "listed by GSA before the group, not by the group";
  EXPECT_TRUE(Find(17)->m_bUsed);
  EXPECT_EQ(data.m_dAverageSNR, 20.0) << "the mean of 40 and of the 0 of a slot that has no signal yet";
  EXPECT_TRUE(data.m_dPDOP == 2.5 && data.m_dVDOP == 2.1);
  EXPECT_EQ(data.m_dHDOP, 0.9) << "the last writer counts";
  EXPECT_EQ(data.m_nSatellitesInView, 8) << "at least the used ones";
  EXPECT_TRUE(data.m_bSatellitesChanged);
}

TEST_F(SatelliteTest, GivesAnUnusedSlotToANewSatelliteAndNoneWhenAllAreUsed) {
  Gsa({101, 102, 103, 104, 106, 107, 108, 109, 110, 111, 112});
  FeedSentence("$GPGSV,1,1,01,33,40,083,40");
  const CGPSData data = Table();
  EXPECT_EQ(data.m_Satellites[4].m_nPRN, 33);
  Gsa({101, 102, 103, 104, 33, 106, 107, 108, 109, 110, 111, 112});
  EXPECT_TRUE(FeedSentence("$GPGSV,1,1,02,44,40,083,40,101,45,090,41"));
  Table();
  EXPECT_EQ(Find(44), nullptr);
  EXPECT_EQ(Find(101)->m_nSNR, 0) << "the groups after a satellite without a place are dropped";
}

TEST_F(SatelliteTest, WantsTheSentencesOfAGroupInOrder) {
  for (const char* sentence : {"1,09,101,41,083,46", "3,09,102,42,083,46", "2,09,103,43,083,46"})
    EXPECT_FALSE(FeedSentence(std::string("$GPGSV,3,") + sentence));
  Table();
  EXPECT_TRUE(Find(101)->m_bInView && !Find(102)->m_bInView && !Find(103)->m_bInView);
  EXPECT_FALSE(FeedSentence("$GPGSV,2,1,09,104,44,083,46"));
  EXPECT_FALSE(Table().m_bSatellitesComplete);
  EXPECT_TRUE(FeedSentence("$GPGSV,2,2,09,105,45,083,46"));
  EXPECT_TRUE(Last().m_bSatellitesComplete && Find(104)->m_bInView);
  EXPECT_FALSE(Find(101)->m_bInView) << "in view in a group that was broken off";
  FeedSentence("$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,,,,");
  EXPECT_TRUE(Table().m_bSatellitesComplete) << "until the next group";
  EXPECT_FALSE(FeedSentence("$GPGSV,2,1,09,106,44,083,46"));
  const COtherGps other;
  EXPECT_FALSE(FeedSentence("$GPGSV,2,2,09,107,45,083,46"))
      << "a receiver that is made waits for a first one";
}

TEST_F(SatelliteTest, TakesNothingOnTrustInAGsv) {
  for (const char* sentence : {"$GPGSV,200,1,99,01,40,083,46", "$GPGSV,3,11,12,01,40,083,46", "$GPGSV,0,0,0",
                               "$GPGSV,-1,-1,-5,1,1,1,1", "$GPGSV,2147483646,1,12,01,40,083,46", "$GPGSV",
                               "$GPGSV,,,,", "$GPGSV,1,1"})
    FeedSentence(sentence);
  EXPECT_TRUE(FeedSentence("$GPGSV,1,1,03,41,40,361,,42,,090,45,43,45,090,45"));
  EXPECT_EQ(Find(41)->m_nSNR, 0);
  EXPECT_DOUBLE_EQ(Find(41)->m_dAzimuth, 361 * kDegree);
  EXPECT_EQ(Find(42), nullptr) << "an empty elevation ends the sentence";
  EXPECT_EQ(Find(43), nullptr);
  FeedSentence("$GPGSV,1,1,05,51,1,1,1,52,1,1,1,53,1,1,1,54,1,1,1,55,1,1,1");
  EXPECT_TRUE(Find(54) != nullptr && Find(55) == nullptr) << "four a sentence";
  EXPECT_FALSE(FeedSentence("$GPGSA,A,1,,,,")) << "short but valid";
}

TEST_F(SatelliteTest, KeepsDilutionsThatAGsaLacks) {
  Gsa({101}, "4.0,3.0,2.0");
  EXPECT_FALSE(FeedSentence("$GPGSA,A,3,101"));
  FeedSentence("$GPGSV,1,1,01,101,40,083,40");
  EXPECT_TRUE(Last().m_dPDOP == 4.0 && Last().m_dHDOP == 3.0 && Last().m_bDOPValid);
}

TEST_F(SatelliteTest, DeclaresTheTableIncompleteWhenTheHostAsks) {
  FeedSentence("$GPGSV,1,1,01,101,40,083,40");
  EXPECT_TRUE(Last().m_bSatellitesComplete);
  FeedSentence("$GPGSV,2,1,05,101,40,083,40");
  EXPECT_FALSE(Table().m_bSatellitesComplete) << "until the rest of it is here";
  FeedSentence("$GPGSV,2,2,05");
  EXPECT_TRUE(Last().m_bSatellitesComplete);
  receiver.InvalidateSVInfo();
  EXPECT_FALSE(Table().m_bSatellitesComplete);
  FeedSentence("$GPGSV,1,1,01,101,40,083,40");
  receiver.Initialize();
  EXPECT_FALSE(Table().m_bSatellitesComplete);
  EXPECT_NE(Find(101), nullptr);
}

TEST_F(SatelliteTest, TurnsACourseIntoAMathematicalAngle) {
  constexpr std::pair<const char*, double> rows[] = {{"0", 90},   {"90", 0},    {"180", 270}, {"270", 180},
                                                     {"360", 90}, {"450", 0},   {"810", 0},   {"500", 310},
                                                     {"-271", 1}, {"-1000", 10}};
  for (const auto& [course, heading] : rows) {
    EXPECT_FALSE(FeedSentence(std::string("$GPVTG,") + course + ",T,,M,019.4,N,36.0,K"));
    EXPECT_NEAR(Table().m_dHeading, heading * kDegree, 1e-12) << course;
    EXPECT_EQ(Last().m_dSpeed, 10.0);
    EXPECT_TRUE(Last().m_bVelocityValid);
    EXPECT_FALSE(Table().m_bVelocityValid) << "until the next VTG";
  }
}

TEST_F(SatelliteTest, LeavesMotionToTheEstimatorUntilAGoodVtgComes) {
  const auto at = [this](const char* time, const char* latitude) {
    EXPECT_TRUE(
        FeedSentence(std::string("$GPGGA,") + time + ',' + latitude + ",N,01131.000,E,1,08,0.9,545.4,M,,,,"));
    return Last().m_bVelocityValid;
  };
  receiver.ResetSpeedEngine();
  EXPECT_FALSE(at("120000", "4800.000"));
  EXPECT_TRUE(at("120001", "4800.010"));
  EXPECT_GT(Last().m_dSpeed, 5.0);
  EXPECT_FALSE(FeedSentence("$GPVTG,0,T,,M,019.4,N,36.0,X"));
  EXPECT_FALSE(FeedSentence("$GPVTG,0,X,,M,019.4,N,36.0,K"));
  for (const char* sentence : {"$GPVTG,,T,,M,,N,,K", "$GPVTG,0,T,,M,,N,,K", "$GPVTG,0,T,,M,,N,7"})
    EXPECT_FALSE(FeedSentence(sentence));
  EXPECT_TRUE(at("120002", "4800.020"));
  EXPECT_FALSE(FeedSentence("$GPVTG,0,t,,M,019.4,N,36.0,k"));
  EXPECT_TRUE(at("120003", "4800.030"));
  EXPECT_EQ(Last().m_dSpeed, 10.0);
  EXPECT_FALSE(at("120004", "4800.040"));
}

TEST(SpeedEngine, ReadsTheTrueSpeedFromTheFourthFixOn) {
  constexpr double kMetre = 1.0 / 6378000.0;
  CSpeedEngine engine;
  CGPSData fix;
  fix.m_nSignalType = UDF_SIGNAL_GPS;
  fix.m_dLatitude = 0.5;
  fix.m_dLongitude = 0.25;
  const auto move = [&](double metres, double seconds) {
    fix.m_dLatitude = 0.5 + metres * kMetre;
    fix.m_dTimeOfDay = seconds;
    return engine.ComputeMotion(fix);
  };
  EXPECT_FALSE(move(0, 86394));
  EXPECT_EQ(fix.m_dLocalNorth, 0.0);
  for (int i = 0; i < 8; ++i) {
    fix.m_dLongitude = 0.25 + 8.0 * (i + 1) * kMetre / std::cos(0.5);
    EXPECT_TRUE(move(6.0 * (i + 1), (86396 + 2 * i) % 86400)) << "across midnight";
    EXPECT_NEAR(fix.m_dSpeed, i < 2 ? 2.5 : 5.0, 1e-6);
    EXPECT_NEAR(fix.m_dHeading, std::atan2(3.0, 4.0), 1e-9);
  }
  EXPECT_NEAR(fix.m_dLocalEast, 64.0, 1e-6);
  EXPECT_FALSE(move(54, 10)) << "no time has passed";
  fix.m_nSignalType = UDF_SIGNAL_NONE;
  EXPECT_FALSE(move(99, 12)) << "no fix";
  fix.m_nSignalType = UDF_SIGNAL_GPS;
  fix.m_dLongitude = 1e305;
  EXPECT_FALSE(move(54, 12)) << "no place";
  fix.m_dLongitude = 0.25;
  EXPECT_TRUE(move(54, 12));
  EXPECT_GT(fix.m_dHeading, std::numbers::pi / 2) << "between north and west";
  engine.Reset();
  EXPECT_FALSE(move(50, 5));
  EXPECT_EQ(fix.m_dLocalNorth, 0.0) << "a new reference point";
  EXPECT_TRUE(move(50, 6));
  EXPECT_EQ(fix.m_dSpeed, 0.0);
  EXPECT_EQ(fix.m_dHeading, 0.0);
}

TEST(SpeedEngine, TellsDirectionsOfTheCompass) {
  constexpr std::tuple<double, double, double> rows[] = {{0, 0, 0},      {1, 0, 90},    {-1, 0, -90},
                                                         {0, 1, 0},      {0, -1, -180}, {1, -1, 135},
                                                         {-1, -1, -135}, {-1, 1, -45}};
  for (const auto& [north, east, degrees] : rows)
    EXPECT_NEAR(Direction(north, east), degrees * kDegree, 1e-12) << north << ' ' << east;
  EXPECT_EQ(Distance(1, 2, 4, 6), 5.0);
}

}  // namespace
