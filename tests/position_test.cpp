#include "gpsengine/drivers/gsr2650lb.h"
#include "gpsengine/face/decode.h"
#include "tests/support/receivertest.h"

namespace {

struct PositionTest : ReceiverTest<> {
  void SetUpHeights(double antenna, int geoidMode) {
    receiver.SetupReceiver(1, geoidMode, antenna, "", false);
  }
  int SignalType(const char* quality, const char* satellites, const char* tag = "$GPGGA") {
    EXPECT_TRUE(FeedSentence(std::string(tag) + ",123519,4807.038,N,01131.000,E," + quality + "," +
                             satellites + ",0.9,545.4,M,46.9,M,,"));
    return Last().m_nSignalType;
  }
};

TEST_F(PositionTest, DecodesAGga) {
  EXPECT_TRUE(FeedSentence("$GPGGA,123519.25,4807.038,N,01131.000,W,2,08,0.9,545.4,M,46.9,M,,"));
  EXPECT_DOUBLE_EQ(Last().m_dLatitude, 0.8398053121698675);
  EXPECT_DOUBLE_EQ(Last().m_dLongitude, -(11.0 + 31.0 / 60.0) * kDegree);
  EXPECT_DOUBLE_EQ(Last().m_dTimeOfDay, 45319.25);
  EXPECT_EQ(Last().m_nSatellitesUsed, 8);
  EXPECT_EQ(Last().m_dHDOP, 0.9);
  EXPECT_EQ(Last().m_dAltitude, 545.4);
  EXPECT_TRUE(Last().m_bPositionValid && Last().m_bDOPValid);
  EXPECT_TRUE(FeedSentence("$GNGGA,000000,4807.038,S,01131.000,E,2,08,0.9,545.4,M,46.9,M,,"));
  EXPECT_DOUBLE_EQ(Last().m_dLatitude, -0.8398053121698675);
  EXPECT_TRUE(FeedSentence("$GPGGA,000000,4807.038,n,01131.000,e,2,08,0.9,545.4,m,46.9,M,,"));
  EXPECT_LT(Last().m_dLatitude, 0.0) << "a lower-case letter is the other hemisphere";
  EXPECT_LT(Last().m_dLongitude, 0.0);
}

TEST_F(PositionTest, MapsTheQualityIndicator) {
  constexpr std::pair<const char*, int> rows[] = {{"0", 0}, {"1", 1}, {"2", 2},  {"3", 1},
                                                  {"4", 6}, {"5", 7}, {"6", 3},  {"7", 4},
                                                  {"8", 1}, {"9", 9}, {"12", 1}, {"-1", 1}};
  for (const auto& [quality, type] : rows) EXPECT_EQ(SignalType(quality, "04"), type) << quality;
  EXPECT_EQ(SignalType("4", "3"), UDF_SIGNAL_NONE);
}

TEST_F(PositionTest, TakesAntennaHeightAndSeparationIntoAccount) {
  constexpr std::tuple<int, const char*, double> rows[] = {
      {0, "100.0,M,30.0,M,,", 98.0},  {1, "100.0,M,30.0,M,,", 128.0}, {2, "100.0,M,30.0,M,,", 68.0},
      {1, "100.0,m,30.0,m,,", 128.0}, {1, "100.0,M", 98.0},           {1, "100.0,M,30.0,F,,", 98.0},
      {1, "100.0,M,,M,,", 98.0},      {0, "100.0,M", 98.0},
  };
  for (const auto& [mode, tail, altitude] : rows) {
    SetUpHeights(2.0, mode);
    EXPECT_TRUE(FeedSentence(std::string("$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,") + tail));
    EXPECT_EQ(Last().m_dAltitude, altitude) << mode << " " << tail;
  }
}

TEST_F(PositionTest, LeavesAFailedGgaForTheNextPublication) {
  FeedSentence("$GPGGA,000001,1000.000,N,01000.000,E,2,08,0.9,50.0,M,,,,");
  window.records.clear();
  SetUpHeights(2.0, 0);
  EXPECT_FALSE(FeedSentence("$GPGGA,000002,2000.000,N,01000.000,E,2,08,0.9,300.0,F,,,,"));
  EXPECT_FALSE(FeedSentence("$GPGGA,000003,3000.000,N,,E,2,08,0.9,60.0,M,,,,"));
  EXPECT_EQ(Published(), 0u);
  EXPECT_TRUE(FeedSentence("$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1"));
  EXPECT_TRUE(Last().m_bPositionValid);
  EXPECT_EQ(Last().m_nSignalType, UDF_SIGNAL_NONE);
  EXPECT_DOUBLE_EQ(Last().m_dTimeOfDay, 3.0);
  EXPECT_DOUBLE_EQ(Last().m_dLatitude, 30.0 * kDegree);
  EXPECT_EQ(Last().m_dAltitude, 300.0) << "as it stood in the sentence, feet and all";
}

TEST_F(PositionTest, KeepsACoordinateWithoutAHemisphereAsItStandsInTheSentence) {
  EXPECT_FALSE(FeedSentence("$GPGGA,000004,4807.038"));  // the checksum stands in for the hemisphere
  EXPECT_FALSE(Feed("$GPGGA,000004,4807.038"));          // no GGA without a checksum
  CString cut = "$GPGGA,000005,1234.500";
  EXPECT_FALSE(receiver.Parse(cut, GPS_STRING_GGA));
  EXPECT_TRUE(FeedSentence("$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1"));
  EXPECT_EQ(Last().m_dLatitude, 1234.5);
}

TEST_F(PositionTest, WantsTheMandatoryFieldsOfAGga) {
  const std::string fields[] = {"$GPGGA", "123519", "4807.038", "N",     "01131.000", "E",
                                "1",      "08",     "0.9",      "545.4", "M"};
  for (const std::size_t missing : {1u, 2u, 4u, 6u, 7u, 8u, 9u, 10u}) {
    std::string sentence;
    for (std::size_t i = 0; i < std::size(fields); ++i)
      sentence += (i == 0 ? "" : ",") + (i == missing ? std::string() : fields[i]);
    EXPECT_FALSE(FeedSentence(sentence)) << sentence;
  }
  for (const char* tooShort : {"$GPGGA", "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4"})
    EXPECT_FALSE(FeedSentence(tooShort));
}

TEST_F(PositionTest, DecodesAnInggaWithGaps) {
  EXPECT_TRUE(FeedSentence("$INGGA,123519,4807.038,N,01131.000,E,1,01,0.9,545.4,M,46.9,M,,"));
  EXPECT_EQ(Last().m_nSignalType, UDF_SIGNAL_CALCULATED);
  EXPECT_TRUE(FeedSentence("$INGGA,,4900.000,N,01131.000,E,0,,,,M,,,,"));
  EXPECT_EQ(Last().m_nSignalType, UDF_SIGNAL_NONE);
  EXPECT_DOUBLE_EQ(Last().m_dLatitude, 49.0 * kDegree);
  EXPECT_TRUE(Last().m_dTimeOfDay == 45319.0 && Last().m_nSatellitesUsed == 1 && Last().m_dAltitude == 545.4);
  EXPECT_FALSE(Last().m_bDOPValid);
  EXPECT_FALSE(FeedSentence("$INGGA,123519,4807.038,N,01131.000,E,1,01,0.9,545.4"));
  EXPECT_FALSE(FeedSentence("$INGGA,123519,,N,01131.000,E,1,01,0.9,545.4,M,46.9,M,,"));
  EXPECT_FALSE(FeedSentence("$INGGA,123519,,1,01,0.9,545.4,M,46.9,M,,")) << "a number for the hemisphere";
  FeedSentence("$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1");
  EXPECT_EQ(Last().m_nSignalType, UDF_SIGNAL_NONE) << "of one that has failed";
  SetUpHeights(1.0, 2);
  EXPECT_TRUE(FeedSentence("$INGGA,123519,4807.038,N,01131.000,E,1,01,0.9,545.4,M,46.9,M,,"));
  EXPECT_DOUBLE_EQ(Last().m_dAltitude, 545.4 - 1.0 - 46.9);
  EXPECT_TRUE(FeedSentence("$INGGA,,4900.000,N,01131.000,E,0,,,,M,,,,"));
  EXPECT_DOUBLE_EQ(Last().m_dAltitude, 545.4 - 1.0 - 46.9) << "which has had its corrections";
}

TEST_F(PositionTest, NamesAUnitThatIsNoMetreInTheTrace) {
  if (!kTraceBuilt) GTEST_SKIP() << "a release build traces nothing";
  SetUpHeights(0.0, 1);
  const std::string place = "GGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4";
  const std::pair<std::string, std::string> rows[] = {
      {"$GP" + place + ",F,46.9,M,,", "GGA Ellipsoid Height is not in meters!\nInvalid GGA string.\n"},
      {"$GP" + place + ",M,46.9,F,,", "GGA Geoidal Separation is not in meters!\n"},
      {"$IN" + place, "INGGA Ellipsoid Height is not in meters!\nInvalid INGGA string.\n"},
      {"$IN" + place + ",M,46.9,F,,", "INGGA Geoidal Separation is not in meters!\n"},
  };
  for (const auto& [sentence, trace] : rows)
    EXPECT_EQ(TraceOf([&, said = sentence] { FeedSentence(said); }), trace) << sentence;
}

template <class Receiver>
struct Open : Receiver {
  using Receiver::m_bAlternateSignalTable;
};

// The user's table of quality indicators.
class AlternateStatus : public ReceiverTest<Open<COtherGps>> {
 protected:
  ~AlternateStatus() override { std::filesystem::remove(path); }

  void Load(std::string_view content) {
    std::ofstream(path, std::ios::binary) << content;
    receiver.Initialize();
  }
  int SignalType(int quality) {
    FeedSentence("$GPGGA,120000.00,5130.0000,N,00006.0000,W," + std::to_string(quality) +
                 ",08,1.0,45.0,M,47.0,M,,");
    return Last().m_nSignalType;
  }

  const std::filesystem::path path =
      std::filesystem::read_symlink("/proc/self/exe").parent_path() / "GPSStatus";
};

TEST_F(AlternateStatus, NamedIndicatorsChangeAndTheOthersStay) {
  EXPECT_EQ(SignalType(4), UDF_SIGNAL_RTK_FIXED);
  Load(
      "4,UDF_SIGNAL_RTK_CODE\r\n\r\n2 metres,\t\"udf_signal_WAAS\" "
      "\r\n\"5\",UDF_SIGNAL_MANUAL\n1,UDF_SIGNAL_OTHER\n");
  constexpr std::pair<int, int> kRows[] = {
      {4, UDF_SIGNAL_RTK_CODE}, {2, UDF_SIGNAL_WAAS}, {5, UDF_SIGNAL_RTK_FLOAT}, {1, UDF_SIGNAL_GPS}};
  for (const auto& [quality, type] : kRows) EXPECT_EQ(SignalType(quality), type) << quality;
}

TEST_F(AlternateStatus, KnowsAllElevenNamesAndTheLastLineCounts) {
  constexpr const char* kNames[] = {"NONE",          "GPS",      "CORRECTED_GPS", "CALCULATED",
                                    "MANUAL",        "RTK_CODE", "RTK_FIXED",     "RTK_FLOAT",
                                    "POSTPROCESSED", "WAAS",     "UNKNOWN"};
  std::string content;
  for (int type = 0; type < static_cast<int>(std::size(kNames)); ++type) {
    content += std::string("7,UDF_SIGNAL_") + kNames[type] + "\n";
    Load(content);
    EXPECT_EQ(SignalType(7), type) << kNames[type];
  }
}

TEST_F(AlternateStatus, TableOutlivesItsFileAndGrowsButForTheDefaultLine) {
  Load("Default,UDF_SIGNAL_MANUAL\n");
  EXPECT_TRUE(receiver.m_bAlternateSignalTable && Open<Cgsr2650lb>().m_bAlternateSignalTable) << "or made";
  Load("4,UDF_SIGNAL_WAAS\nDefault,UDF_SIGNAL_MANUAL\n");
  std::filesystem::remove(path);
  receiver.Initialize();
  Load("5,UDF_SIGNAL_WAAS");
  EXPECT_EQ(SignalType(4), UDF_SIGNAL_WAAS);
  EXPECT_EQ(SignalType(5), UDF_SIGNAL_WAAS);
  EXPECT_EQ(SignalType(0), UDF_SIGNAL_NONE);
  const std::string fix = WithChecksum("$GPGGA,120000,5130.0,N,00006.0,W,5,08,1.0,45.0,M,47.0,M,,");
  EXPECT_EQ(gps::decode(std::as_bytes(std::span(fix))).fixes().next()->signal, UDF_SIGNAL_WAAS);
}

}  // namespace
