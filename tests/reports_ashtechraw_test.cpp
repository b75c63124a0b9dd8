#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <numbers>

#include "tests/support/receivertest.h"
#include "tests/support/wirebuilder.h"

namespace {

constexpr double kSpeedOfLight = 299792458.0;

class AshtechRaw : public ReceiverTest<> {
 protected:
  // The epoch and the ephemeris at hand outlive a receiver: begin with neither.
  AshtechRaw() {
    FeedBinary(Pbn{.checksumError = 1}.Message());
    FeedBinary(Snv{.week = 0}.Message());
    window.records.clear();
    bad = receiver.GetBadBinaryMessages();
  }

  /// Measurements of satellites 1 to `count`.
  void FeedMeasurements(int count) {
    for (int prn = 1; prn <= count; ++prn) FeedBinary(Mbn{.prn = prn, .toFollow = count - prn}.Message());
  }
  int Refused() const { return receiver.GetBadBinaryMessages() - bad; }

  int bad = 0;
};

TEST_F(AshtechRaw, PositionOfAnEpochSendsItsMeasurements) {
  constexpr Mbn kMeasurements[] = {
      {.prn = 3, .toFollow = 3, .count = 1499, .range = 0.93, .doppler = 12345, .phase = 1000.25},
      {.prn = 17, .toFollow = 2, .count = -1499, .range = 2.5, .doppler = -5, .phase = -7.5},
      {.prn = 5, .toFollow = 1, .range = -0.5},
      {.prn = 32, .toFollow = 0, .range = 1.0 + 1e-9},
  };
  constexpr double kFractions[] = {0.07, 0.5, 0.5, -1e-9};
  for (const Mbn& mbn : kMeasurements) EXPECT_TRUE(FeedBinary(mbn.Message()));
  EXPECT_EQ(Published(), 4U);  // a record behind each measurement
  line.SetUnixSeconds(1'200'000'000);
  EXPECT_TRUE(
      FeedBinary(Pbn{.milliseconds = 345'600'123, .clockOffset = 299.5F, .clockDrift = -0.25F}.Message()));

  ASSERT_EQ(window.epochs.size(), 1U);
  EXPECT_EQ(Published(), 4U);  // the epoch stands for it
  const CGPSDataRaw& epoch = window.epochs.front();
  ASSERT_EQ(epoch.GetNumSV(), 4);
  CGPSSatelliteDataRaw satellite;
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(epoch.GetSatelliteData(satellite, i));
    EXPECT_EQ(satellite.m_nPRN, kMeasurements[i].prn);
    EXPECT_EQ(satellite.m_nSignalCount, kMeasurements[i].count / 500);
    EXPECT_NEAR(satellite.m_dPseudorange, kFractions[i] * kSpeedOfLight, 1e-3);
    EXPECT_NEAR(satellite.m_dDoppler, kMeasurements[i].doppler * -0.0001, 1e-9);
    EXPECT_EQ(satellite.m_dCarrierPhase, -kMeasurements[i].phase);
    EXPECT_TRUE(satellite.m_bValid);
  }
  EXPECT_TRUE(epoch.m_bPositionValid);
  EXPECT_TRUE(epoch.m_bEpochComplete);
  EXPECT_DOUBLE_EQ(epoch.m_dReceiverTime, 345'600.123);
  EXPECT_DOUBLE_EQ(epoch.m_dCorrectedTime, 345'600.123 - 299.5 / kSpeedOfLight);
  EXPECT_EQ(epoch.m_dClockOffset, 299.5);
  EXPECT_EQ(epoch.m_dClockDrift, -0.25);
  EXPECT_EQ(epoch.m_Time.GetTime(), 1'200'000'000);

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
  EXPECT_EQ(Refused(), 1);
}

TEST_F(AshtechRaw, RefusesABadMeasurementAndGoesOnWithoutIt) {
  FeedMeasurements(4);
  constexpr Mbn kBad[] = {{.prn = 20, .checksumError = 1},
                          {.prn = 20, .dataType = 2},
                          {.prn = 20, .goodBad = 23},
                          {.prn = 0},
                          {.prn = -4}};
  for (const Mbn& mbn : kBad) EXPECT_FALSE(FeedBinary(mbn.Message()));
  EXPECT_EQ(Refused(), 5);
  FeedBinary(Pbn{}.Message());
  ASSERT_EQ(window.epochs.size(), 1U);
  EXPECT_EQ(window.epochs.front().GetNumSV(), 4);
}

// Geodetic to earth-centred is exact, unlike the way back.
TEST_F(AshtechRaw, PositionComesInDegreesAndMetres) {
  constexpr double a = 6378137.0, f = 0.003352810681238051, e2 = f * (2.0 - f);
  constexpr struct {
    double latitude, longitude, height;
  } kPlaces[] = {{0, 0, 0},           {0, 45, 0},          {51.5, -0.1, 45},
                 {-33.9, 151.2, 120}, {64.1, -179.9, -30}, {89.9, 10, 9000}};
  for (const auto& place : kPlaces) {
    const double latitude = place.latitude * std::numbers::pi / 180,
                 longitude = place.longitude * std::numbers::pi / 180;
    const double n = a / std::sqrt(1 - e2 * std::pow(std::sin(latitude), 2));
    const double p = (n + place.height) * std::cos(latitude);
    FeedMeasurements(4);
    FeedBinary(Pbn{.x = p * std::cos(longitude),
                   .y = p * std::sin(longitude),
                   .z = (n * (1 - e2) + place.height) * std::sin(latitude)}
                   .Message());
    const CGPSDataRaw& epoch = window.epochs.back();
    EXPECT_NEAR(epoch.m_dLatitude, place.latitude, 1e-9);
    EXPECT_NEAR(epoch.m_dLongitude, place.longitude, 1e-9);
    EXPECT_NEAR(epoch.m_dHeight, place.height, 1e-3);
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
  EXPECT_TRUE(FeedBinary(Snv{.week = 1450, .prnLessOne = 8}.Message()));
  ASSERT_EQ(window.ephemerides.size(), 1U);
  EXPECT_EQ(calls, 1);
  const CGPSDataEphemeris& e = window.ephemerides.front();
  EXPECT_EQ(e.m_nWeek, 1450);
  EXPECT_EQ(e.m_nPRN, 9);
  const std::int32_t wholes[] = {e.m_lTow, e.m_lAodc, e.m_lToc, e.m_lAode, e.m_lToe};
  const std::int32_t expectedWholes[] = {1, 3, 4, 8, 13};
  EXPECT_TRUE(std::equal(std::begin(wholes), std::end(wholes), expectedWholes));
  const double numbers[] = {e.m_dTgd,   e.m_dAf2,          e.m_dAf1,      e.m_dAf0, e.m_dDeltaN,
                            e.m_dM0,    e.m_dEccentricity, e.m_dSqrtA,    e.m_dCic, e.m_dCrc,
                            e.m_dCis,   e.m_dCrs,          e.m_dCuc,      e.m_dCus, e.m_dOmega0,
                            e.m_dOmega, e.m_dI0,           e.m_dOmegaDot, e.m_dIDot};
  const double expected[] = {2.5,  5.5,  6.5,  7.5,  9.5,   10.25, 11.25,  12.25, 14.5, 15.5,
                             16.5, 17.5, 18.5, 19.5, 20.25, 21.25, -22.25, 23.5,  -24.5};
  for (std::size_t i = 0; i < std::size(numbers); ++i) EXPECT_EQ(numbers[i], expected[i]) << i;

  EXPECT_TRUE(FeedBinary(Snv{.week = 0}.Message()));  // decoded, but not usable
  EXPECT_FALSE(FeedBinary(Snv{.checksumError = -1}.Message()));
  EXPECT_EQ(window.ephemerides.size(), 1U);
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(FeedBinary(Snv{.prnLessOne = 0}.Message()));
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
  constexpr struct {
    const char* zone;
    std::int64_t seconds;
    int week;
  } kMoments[] = {
      {"UTC0", 315'964'800, 0},       {"UTC0", 316'569'599, 0},      {"UTC0", 316'569'600, 1},
      {"EAST-3", 316'569'600 - 1, 1}, {"WEST3", 316'569'600 + 1, 0}, {"UTC0", 1'554'595'199, 2047},
      {"UTC0", 1'554'595'200, 2048},  {"UTC0", 951'782'400, 1051},   {"UTC0", 4'107'542'400, 6269}};
  for (const auto& moment : kMoments) {
    setenv("TZ", moment.zone, 1);
    tzset();
    line.SetUnixSeconds(moment.seconds);
    EXPECT_EQ(week(), moment.week) << moment.seconds << " " << moment.zone;
  }
  oldZone ? setenv("TZ", restored.c_str(), 1) : unsetenv("TZ");
  tzset();

  FeedBinary(Snv{.week = 1450}.Message());
  EXPECT_EQ(week(), 1450);
}

}  // namespace
