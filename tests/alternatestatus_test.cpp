#include <filesystem>
#include <fstream>

#include "tests/support/receivertest.h"

namespace {

class AlternateStatus : public ReceiverTest<> {
 protected:
  ~AlternateStatus() override { std::filesystem::remove(path); }

  void Load(std::string_view content) {
    std::ofstream(path, std::ios::binary) << content;
    receiver.LoadAlternatGPSStatusStrings();
  }
  /// The kind of fix that a position of this quality shows.
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
  EXPECT_EQ(SignalType(4), UDF_SIGNAL_RTK_CODE);
  EXPECT_EQ(SignalType(2), UDF_SIGNAL_WAAS);
  EXPECT_EQ(SignalType(5), UDF_SIGNAL_RTK_FLOAT);
  EXPECT_EQ(SignalType(1), UDF_SIGNAL_GPS);
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
  Load("4,UDF_SIGNAL_WAAS\nDefault,UDF_SIGNAL_MANUAL\n");
  std::filesystem::remove(path);
  receiver.Initialize();
  Load("5,UDF_SIGNAL_WAAS");
  EXPECT_EQ(SignalType(4), UDF_SIGNAL_WAAS);
  EXPECT_EQ(SignalType(5), UDF_SIGNAL_WAAS);
  EXPECT_EQ(SignalType(0), UDF_SIGNAL_NONE);
}

}  // namespace
