#include <algorithm>
#include <numbers>

#include "tests/support/receivertest.h"
#include "tests/support/wirebuilder.h"

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

class AshtechReport : public ReceiverTest<> {
 protected:
  // The satellite table outlives a receiver. A fix without satellites and twelve strangers, none of them
  // used, make it a known one.
  AshtechReport() {
    FeedSentence("$GPGGA,120000.00,5130.0000,N,00006.0000,W,1,00,1.0,45.0,M,47.0,M,,");
    FeedSentence("$GPGSA,A,1,,,,,,,,,,,,,,,");
    Feed(Sat(201, 12, 'U'));
    Feed(Sat(201, 12, '-'));
    window.records.clear();
  }

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
  constexpr struct {
    int prn, azimuth, elevation, snr;
    bool used;
  } kExpected[] = {{4, 112, 36, 47, true}, {9, 301, 71, 52, true}, {27, 45, 8, 33, false}};
  for (const auto& expected : kExpected) {
    const CGPSSatelliteData* const satellite = Find(expected.prn);
    ASSERT_NE(satellite, nullptr) << expected.prn;
    EXPECT_DOUBLE_EQ(satellite->m_dAzimuth, expected.azimuth * kDegree);
    EXPECT_DOUBLE_EQ(satellite->m_dElevation, expected.elevation * kDegree);
    EXPECT_EQ(satellite->m_nSNR, expected.snr);
    EXPECT_EQ(satellite->m_bUsed, expected.used);
    EXPECT_TRUE(satellite->m_bInView);
  }
  const auto inView = [](const CGPSSatelliteData& satellite) { return satellite.m_bInView; };
  EXPECT_EQ(std::count_if(std::begin(Last().m_Satellites), std::end(Last().m_Satellites), inView), 3);
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
  const auto counters = [&] {
    return std::pair(receiver.GetBinaryMessages(), receiver.GetBadBinaryMessages());
  };
  receiver.AttachRawData(nullptr, 0);
  EXPECT_FALSE(Feed("$PASHR,PBN,\n"));  // no bytes attached
  EXPECT_EQ(counters(), std::pair(1, 0));
  EXPECT_FALSE(FeedBinary("$PASHR,MBN,"));  // no payload
  EXPECT_EQ(counters(), std::pair(2, 0));
  EXPECT_FALSE(FeedBinary("$PASHR,SNV,short\r"));
  EXPECT_EQ(counters(), std::pair(3, 1));
  EXPECT_FALSE(FeedBinary(Mbn{.checksumError = 1}.Message()));
  EXPECT_EQ(counters(), std::pair(4, 2));
  EXPECT_TRUE(FeedBinary(Mbn{}.Message().replace(7, 3, "mbn")));
  EXPECT_EQ(counters(), std::pair(5, 2));
  for (const char* other : {"$PASHR,MCA,\n", "$PASHR,SAL,\n", "$PASHR,POS,1,2,3*00\r\n"})
    EXPECT_FALSE(Feed(other));
  EXPECT_EQ(counters(), std::pair(5, 2));
}

}  // namespace
