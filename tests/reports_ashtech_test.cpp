#include <algorithm>
#include <numbers>

#include "tests/support/receivertest.h"
#include "tests/support/sharedstate.h"
#include "tests/support/wirebuilder.h"

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

class AshtechReport : public ReceiverTest<> {
 protected:
  AshtechReport() { SharedState::Reset(); }

  /// A report of `count` satellites from number `first` on.
  static std::string Sat(int first, int count, char flag) {
    std::string report = "$PASHR,SAT," + std::to_string(count);
    for (int prn = first; prn < first + count; ++prn)
      report += "," + std::to_string(prn) + ",10,20,30," + flag;
    return report + "*00\r\n";
  }
  const CGPSSatelliteData* Find(int prn) const {
    const auto slot =
        std::find_if(std::begin(Last().m_Satellites), std::end(Last().m_Satellites),
                     [&](const CGPSSatelliteData& satellite) { return satellite.m_nPRN == prn; });
    return slot == std::end(Last().m_Satellites) ? nullptr : slot;
  }
  /// The working record goes out with an acknowledgement, as it is.
  const CGPSData& Working() {
    Feed("$PASHR,ACK*3D\r\n");
    return Last();
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

TEST_F(AshtechReport, AnglesAgreeWithThoseOfGsvInTheLastBit) {
  for (int degrees = 0; degrees < 360; ++degrees) {
    const std::string azimuth = std::to_string(degrees);
    FeedSentence("$GPGSV,1,1,01,05,40," + azimuth + ",46");
    const double standard = Find(5)->m_dAzimuth;
    receiver.Initialize();  // or the report would be passed over
    Feed("$PASHR,SAT,1,05," + azimuth + ",40,46,U*00\r\n");
    ASSERT_EQ(Find(5)->m_dAzimuth, standard) << degrees;
  }
}

TEST_F(AshtechReport, EmptySatReportLeavesTheSatellitesButNotInView) {
  Feed(Sat(1, 2, 'U'));
  EXPECT_TRUE(Feed("$PASHR,SAT,00*45\r\n"));
  EXPECT_EQ(Last().m_nSatellitesInView, 0);
  EXPECT_EQ(Last().m_dAverageSNR, 30.0);
  ASSERT_NE(Find(2), nullptr);
  EXPECT_TRUE(Find(2)->m_bUsed);
  EXPECT_FALSE(Find(2)->m_bInView);
}

TEST_F(AshtechReport, ThirteenthSatelliteTakesAnUnusedSlotOrNone) {
  Feed(Sat(1, 13, '-'));
  EXPECT_EQ(Find(1), nullptr);  // displaced by the last one
  EXPECT_NE(Find(13), nullptr);
  Feed(Sat(51, 13, 'U'));
  EXPECT_NE(Find(51), nullptr);
  EXPECT_EQ(Find(63), nullptr);
  EXPECT_EQ(Last().m_nSatellitesInView, 13);
}

TEST_F(AshtechReport, SatReportThatEndsTooSoonKeepsWhatItReadAndIsNotPublished) {
  Feed(Sat(1, 1, 'U'));
  EXPECT_FALSE(Feed("$PASHR,SAT,03,61,10,20,44,U,62,10*4A\r\n"));
  EXPECT_FALSE(Feed("$PASHR\r\n"));
  EXPECT_EQ(Published(), 1U);
  const CGPSData& data = Working();
  EXPECT_EQ(data.m_nSatellitesInView, 3);
  EXPECT_NE(Find(61), nullptr);
  EXPECT_EQ(Find(62), nullptr);
  ASSERT_NE(Find(1), nullptr);
  EXPECT_FALSE(Find(1)->m_bInView);
  EXPECT_EQ(data.m_dAverageSNR, 30.0);  // of the report before
}

TEST_F(AshtechReport, CountsBinaryMessagesAndThoseItRefuses) {
  const struct {
    std::string message;
    bool attached, taken;
    int binary, bad;                                  // from now on
  } rows[] = {{"$PASHR,PBN,\n", false, false, 1, 0},  // no bytes attached
              {"$PASHR,MBN,", true, false, 2, 0},     // no payload
              {"$PASHR,SNV,short\r", true, false, 3, 1},
              {Mbn{.checksumError = 1}.Message(), true, false, 4, 2},
              {Mbn{}.Message().replace(7, 3, "mbn"), true, true, 5, 2},
              {"$PASHR,MCA,\n", false, false, 5, 2},
              {"$PASHR,SAL,\n", false, false, 5, 2},
              {"$PASHR,POS,1,2,3*00\r\n", false, false, 5, 2}};
  for (const auto& row : rows) {
    receiver.AttachRawData(nullptr, 0);
    EXPECT_EQ(row.attached ? FeedBinary(row.message) : Feed(row.message), row.taken) << row.message;
    EXPECT_EQ(receiver.GetBinaryMessages(), row.binary) << row.message;
    EXPECT_EQ(receiver.GetBadBinaryMessages(), row.bad) << row.message;
  }
}

}  // namespace
