#include <ctime>

#include "host/records/recordsink.h"
#include "simulator/geodesy.h"
#include "tests/support/receivertest.h"
#include "tests/support/wirebuilder.h"

namespace {

class AshtechReport : public ReceiverTest<> {
 protected:
  static std::string Sat(int first, int count, char flag) {
    std::string report = "$PASHR,SAT," + std::to_string(count);
    for (int prn = first; prn < first + count; ++prn)
      report += "," + std::to_string(prn) + ",10,20,30," + flag;
    return report + "*00\r\n";
  }
};

TEST_F(AshtechReport, SatReportFillsTheTableAndIsPublishedAtOnce) {
  EXPECT_TRUE(
      Feed("$PASHR,sat,03,04,112,36,47,U,09,301,71,52,u,27,045,08,33,-*FF\r\n"));  // no checksum counts here
  ASSERT_EQ(Published(), 1U);
  EXPECT_EQ(Last().m_nSatellitesInView, 3);
  EXPECT_TRUE(Last().m_bSatellitesChanged);
  EXPECT_TRUE(Last().m_bSatellitesComplete);
  EXPECT_FALSE(Last().m_bPositionValid);
  EXPECT_DOUBLE_EQ(Last().m_dAverageSNR, 49.5);
  constexpr CGPSSatelliteData kExpected[] = {{36 * kDegree, 112 * kDegree, 4, true, true, 47},
                                             {71 * kDegree, 301 * kDegree, 9, true, true, 52},
                                             {8 * kDegree, 45 * kDegree, 27, false, true, 33}};
  for (const CGPSSatelliteData& expected : kExpected) {
    const CGPSSatelliteData* const satellite = Find(expected.m_nPRN);
    ASSERT_NE(satellite, nullptr) << expected.m_nPRN;
    EXPECT_DOUBLE_EQ(satellite->m_dAzimuth, expected.m_dAzimuth);
    EXPECT_DOUBLE_EQ(satellite->m_dElevation, expected.m_dElevation);
    EXPECT_EQ(satellite->m_nSNR, expected.m_nSNR);
    EXPECT_EQ(satellite->m_bUsed, expected.m_bUsed);
    EXPECT_TRUE(satellite->m_bInView);
  }
  const auto inView = [](const CGPSSatelliteData& satellite) { return satellite.m_bInView; };
  EXPECT_EQ(std::count_if(std::begin(Last().m_Satellites), std::end(Last().m_Satellites), inView), 3);
}

TEST_F(AshtechReport, SatelliteOfNoReportIsNotInView) {
  Feed(Sat(1, 2, 'U'));
  EXPECT_TRUE(Feed("$PASHR,SAT,00*45\r\n"));
  EXPECT_EQ(Last().m_nSatellitesInView, 0);
  EXPECT_EQ(Last().m_dAverageSNR, 30.0);
  ASSERT_NE(Find(2), nullptr);
  EXPECT_TRUE(Find(2)->m_bUsed && !Find(2)->m_bInView);
  // One that ends too soon keeps what it read, and is not published.
  EXPECT_FALSE(Feed("$PASHR,SAT,03,61,10,20,44,U,62,10*4A\r\n"));
  EXPECT_FALSE(Feed("$PASHR\r\n"));
  EXPECT_EQ(Published(), 2U);
  Feed("$PASHR,ACK*3D\r\n");  // with which the working record goes out as it is
  EXPECT_EQ(Last().m_nSatellitesInView, 3);
  EXPECT_TRUE(Find(61) != nullptr && Find(62) == nullptr);
  EXPECT_EQ(Last().m_dAverageSNR, 30.0) << "of the report before";
}

TEST_F(AshtechReport, ThirteenthSatelliteTakesAnUnusedSlotOrNone) {
  Feed(Sat(1, 13, '-'));
  EXPECT_TRUE(Find(1) == nullptr && Find(13) != nullptr) << "displaced by the last one";
  Feed(Sat(51, 13, 'U'));
  EXPECT_TRUE(Find(51) != nullptr && Find(63) == nullptr);
  EXPECT_EQ(Last().m_nSatellitesInView, 13);
}

TEST_F(AshtechReport, CountsBinaryMessagesAndThoseItRefuses) {
  const auto bare = [](const std::string& message) { return message.substr(0, message.size() - 1); };
  // What comes, whether its bytes are attached, whether it is taken, and the two counts from then on.
  const std::tuple<std::string, bool, bool, int, int> rows[] = {
      {"$PASHR,PBN,\n", false, false, 1, 0},  // no bytes attached
      {"$PASHR,MBN,", true, false, 2, 0},     // no payload
      {"$PASHR,SNV,short\r", true, false, 3, 1},
      {Mbn{.checksumError = 1}.Message(), true, false, 4, 2},
      {Mbn{}.Message().replace(7, 3, "mbn"), true, true, 5, 2},
      {"$PASHR,MCA,\n", false, false, 5, 2},
      {"$PASHR,SAL,\n", false, false, 5, 2},
      {"$PASHR,POS,1,2,3*00\r\n", false, false, 5, 2},
      {bare(Mbn{.prn = 2}.Message()), true, true, 6, 2},  // what stands after it is not waited for
      {bare(Snv().Message()), true, true, 7, 2},
      {bare(Pbn().Message()), true, true, 8, 2}};
  for (const auto& [message, attached, taken, binary, bad] : rows) {
    receiver.AttachRawData(nullptr, 0);
    EXPECT_EQ(attached ? FeedBinary(message) : Feed(message), taken) << message;
    EXPECT_EQ(receiver.GetBinaryMessages(), binary) << message;
    EXPECT_EQ(receiver.GetBadBinaryMessages(), bad) << message;
  }
}

class AshtechRaw : public ReceiverTest<> {
 protected:
  void FeedMeasurements(int count) {
    for (int prn = 1; prn <= count; ++prn) FeedBinary(Mbn{.prn = prn, .toFollow = count - prn}.Message());
  }
};

TEST_F(AshtechRaw, PositionOfAnEpochSendsItsMeasurements) {
  constexpr Mbn kMeasurements[] = {
      {.prn = 9, .toFollow = 4, .range = 0.0},
      {.prn = 3, .toFollow = 3, .count = 1499, .range = 0.93, .doppler = 12345, .phase = 1000.25},
      {.prn = 17, .toFollow = 2, .count = -1499, .range = 2.5, .doppler = -5, .phase = -7.5},
      {.prn = 5, .toFollow = 1, .range = -0.5},
      {.prn = 32, .toFollow = 0, .range = 1.0 + 1e-9},
  };
  for (const Mbn& mbn : kMeasurements) EXPECT_TRUE(FeedBinary(mbn.Message()));
  EXPECT_EQ(Published(), 5U);  // a record after each measurement
  line.SetUnixSeconds(1'200'000'000);
  EXPECT_TRUE(
      FeedBinary(Pbn{.milliseconds = 345'600'123, .clockOffset = 299.5F, .clockDrift = -0.25F}.Message()));

  ASSERT_EQ(window.epochs.size(), 1U);
  EXPECT_EQ(Published(), 5U);  // the epoch stands for it
  std::string shown;
  host::RecordSink(shown).OnRawData(window.epochs.front());
  EXPECT_EQ(
      shown,
      R"({"message":"WM_GPS_NEW_RAW_DATA","m_Time":1200000000,"m_dLatitude":0,"m_dLongitude":0,"m_dHeight":0,)"
      R"("m_dSpare":0,"m_bPositionValid":true,"m_bSpare":false,"m_bEpochComplete":true,)"
      R"("m_dReceiverTime":345600.123,"m_dCorrectedTime":345600.122999001,"m_dClockOffset":299.5,)"
      R"("m_dClockDrift":-0.25,"m_nGPSWeek":1461,"m_Satellites":[)"
      R"({"m_nPRN":9,"m_nSignalCount":0,"m_dPseudorange":299792458,"m_dCarrierPhase":-0,)"
      R"("m_dDoppler":-0,"m_dSpare1":0,"m_dSpare2":0,"m_bValid":true},)"
      R"({"m_nPRN":3,"m_nSignalCount":2,"m_dPseudorange":20985472.059999984,"m_dCarrierPhase":-1000.25,)"
      R"("m_dDoppler":-1.2345000000000002,"m_dSpare1":0,"m_dSpare2":0,"m_bValid":true},)"
      R"({"m_nPRN":17,"m_nSignalCount":-2,"m_dPseudorange":149896229,"m_dCarrierPhase":7.5,)"
      R"("m_dDoppler":5e-04,"m_dSpare1":0,"m_dSpare2":0,"m_bValid":true},)"
      R"({"m_nPRN":5,"m_nSignalCount":0,"m_dPseudorange":149896229,"m_dCarrierPhase":-0,)"
      R"("m_dDoppler":-0,"m_dSpare1":0,"m_dSpare2":0,"m_bValid":true},)"
      R"({"m_nPRN":32,"m_nSignalCount":0,"m_dPseudorange":-0.2997924828049392,"m_dCarrierPhase":-0,)"
      R"("m_dDoppler":-0,"m_dSpare1":0,"m_dSpare2":0,"m_bValid":true}],"m_nSatellites":5})"
      "\n");

  FeedMeasurements(3);  // none of the old ones is left to make up four
  FeedBinary(Pbn{}.Message());
  EXPECT_EQ(window.epochs.size(), 1U);
}

TEST_F(AshtechRaw, EpochOfThreeSatellitesOrABadPositionIsDropped) {
  FeedMeasurements(3);
  EXPECT_TRUE(FeedBinary(Pbn{}.Message()));  // a record goes out, but no epoch
  FeedMeasurements(4);
  EXPECT_FALSE(FeedBinary(Pbn{.checksumError = 1}.Message()));
  FeedBinary(Mbn{.prn = 9}.Message());
  FeedBinary(Pbn{}.Message());
  EXPECT_TRUE(window.epochs.empty());
  EXPECT_EQ(receiver.GetBadBinaryMessages(), 1);
}

TEST_F(AshtechRaw, RefusesABadMeasurementAndGoesOnWithoutIt) {
  FeedMeasurements(4);
  constexpr Mbn kBad[] = {{.prn = 20, .checksumError = 1},
                          {.prn = 20, .dataType = 2},
                          {.prn = 20, .goodBad = 23},
                          {.prn = 0},
                          {.prn = -4}};
  for (const Mbn& mbn : kBad) EXPECT_FALSE(FeedBinary(mbn.Message()));
  EXPECT_EQ(receiver.GetBadBinaryMessages(), 5);
  FeedBinary(Pbn{}.Message());
  ASSERT_EQ(window.epochs.size(), 1U);
  EXPECT_EQ(window.epochs.front().GetNumSV(), 4);
}

// Geodetic to earth-centred is exact, unlike the way back.
TEST_F(AshtechRaw, PositionComesInDegreesAndMetres) {
  constexpr simulator::Geodetic kPlaces[] = {{0, 0, 0},           {0, 45, 0},          {51.5, -0.1, 45},
                                             {-33.9, 151.2, 120}, {64.1, -179.9, -30}, {89.9, 10, 9000}};
  for (const auto& [latitude, longitude, height] : kPlaces) {
    const auto p =
        ToVector(simulator::Geodetic{simulator::Radians(latitude), simulator::Radians(longitude), height});
    FeedMeasurements(4);
    FeedBinary(Pbn{.x = p.x, .y = p.y, .z = p.z}.Message());
    const CGPSDataRaw& epoch = window.epochs.back();
    EXPECT_NEAR(epoch.m_dLatitude, latitude, 1e-9);
    EXPECT_NEAR(epoch.m_dLongitude, longitude, 1e-9);
    EXPECT_NEAR(epoch.m_dHeight, height, 1e-3);
  }
  FeedMeasurements(4);
  FeedBinary(Pbn{.x = 0.0}.Message());  // the earth's centre has no place on its surface
  EXPECT_EQ(window.epochs.size(), std::size(kPlaces) + 1);
}

TEST_F(AshtechRaw, EphemerisReachesTheHostWholeWithOneNotification) {
  int calls = 0;
  receiver.AddNotificationCallback(
      GPS_NOTIFY_EPHEMERIS,
      [](GPSNotificationType, CGPSNotification*, void* pCalls) { ++*static_cast<int*>(pCalls); }, &calls);
  EXPECT_TRUE(receiver.HasNotificationCallback(GPS_NOTIFY_EPHEMERIS));
  EXPECT_FALSE(COtherGps().HasNotificationCallback(GPS_NOTIFY_EPHEMERIS));
  EXPECT_TRUE(FeedBinary(Snv{.week = 1450, .prnLessOne = 8}.Message()));
  ASSERT_EQ(window.ephemerides.size(), 1U);
  EXPECT_EQ(calls, 1);
  std::string shown;
  host::RecordSink(shown).OnEphemeris(window.ephemerides.front());
  EXPECT_EQ(
      shown,
      R"({"message":"WM_GPS_NEW_EPHEMERIS","m_nPRN":9,"m_nWeek":1450,"m_lTow":1,"m_dTgd":2.5,"m_lAodc":3,)"
      R"("m_lToc":4,"m_dAf2":5.5,"m_dAf1":6.5,"m_dAf0":7.5,"m_lAode":8,"m_dDeltaN":9.5,"m_dM0":10.25,)"
      R"("m_dEccentricity":11.25,"m_dSqrtA":12.25,"m_lToe":13,"m_dCic":14.5,"m_dCrc":15.5,"m_dCis":16.5,)"
      R"("m_dCrs":17.5,"m_dCuc":18.5,"m_dCus":19.5,"m_dOmega0":20.25,"m_dOmega":21.25,"m_dI0":-22.25,)"
      R"("m_dOmegaDot":23.5,"m_dIDot":-24.5})"
      "\n");

  EXPECT_TRUE(FeedBinary(Snv{.week = 0}.Message()));  // decoded, but not usable
  EXPECT_FALSE(FeedBinary(Snv{.checksumError = -1}.Message()));
  EXPECT_EQ(window.ephemerides.size(), 1U);
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(FeedBinary(Snv{.prnLessOne = 0}.Message().substr(0, 11 + 132)));
  EXPECT_EQ(window.ephemerides.back().m_nPRN, 1);
}

TEST_F(AshtechRaw, WeekIsThatOfTheLastEphemerisElseOfTheLocalDate) {
  const auto week = [&] {
    FeedMeasurements(4);
    FeedBinary(Pbn{}.Message());
    return window.epochs.back().m_nGPSWeek;
  };
  const char* const oldZone = std::getenv("TZ");
  const std::string restored = oldZone ? oldZone : "";
  constexpr std::tuple<const char*, std::int64_t, int> kMoments[] = {
      {"UTC0", 315'964'800, 0},       {"UTC0", 316'569'599, 0},      {"UTC0", 316'569'600, 1},
      {"EAST-3", 316'569'600 - 1, 1}, {"WEST3", 316'569'600 + 1, 0}, {"UTC0", 1'554'595'199, 2047},
      {"UTC0", 1'554'595'200, 2048},  {"UTC0", 951'782'400, 1051},   {"UTC0", 4'107'542'400, 6269}};
  for (const auto& [zone, seconds, number] : kMoments) {
    setenv("TZ", zone, 1);
    tzset();
    line.SetUnixSeconds(seconds);
    EXPECT_EQ(week(), number) << seconds << " " << zone;
  }
  oldZone ? setenv("TZ", restored.c_str(), 1) : unsetenv("TZ");
  tzset();

  FeedBinary(Snv{.week = 1450}.Message());
  EXPECT_EQ(week(), 1450);
}

}  // namespace
