#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "host/decode.h"
#include "tests/support/receivertest.h"

using namespace host;

namespace {

/// A recording of four epochs: positions, a whole group, a broken sentence, noise and a text in a make's own
/// format.
std::string Stream() {
  std::string stream = "\x01\x02";
  for (int i = 0; i < 4; ++i) {
    stream += WithChecksum("$GPGGA,12351" + std::to_string(i) +
                           ",4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,");
    stream += WithChecksum("$GPGSV,1,1,01,07,45,180,41");
    stream += WithChecksum("$PGRME,15.0,M,45.0,M,25.0,M");
  }
  return stream + "$GPGGA,1,2*00\r\n";
}

class HostDecode : public testing::Test {
 protected:
  HostDecode() { options_.file = testing::TempDir() + "host_decode_" + std::to_string(getpid()) + ".log"; }
  ~HostDecode() override { std::remove(options_.file.c_str()); }

  /// What Decode writes for a file of these bytes, without the moment of publication, which is never the
  /// same.
  std::string Decoded(const std::string& bytes) {
    std::ofstream(options_.file, std::ios::binary) << bytes;
    const int descriptor = memfd_create("output", 0);
    Output output(descriptor);
    EXPECT_EQ(Decode(options_, interrupt_, output), ExitCode::done);
    std::string text(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
    EXPECT_EQ(pread(descriptor, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    close(descriptor);
    for (std::size_t at; (at = text.find("\"m_Time\":")) != std::string::npos;)
      text.erase(at, text.find(',', at) - at + 1);
    return text;
  }

  CWinApp app_{"gpsengine-test"};
  Interrupt interrupt_;
  DecodeOptions options_;
};

}  // namespace

TEST_F(HostDecode, EndsTheRecordFormatWithASummary) {
  options_.format = Format::record;
  const std::string text = Decoded(Stream());
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 13);
  EXPECT_EQ(
      text.substr(text.find("{\"summary\"")),
      R"({"summary":{"messages":13,"sentencesRecognised":9,"checksumErrors":1,"binaryMessages":0,)"
      R"("badBinaryMessages":0,"droppedBuffers":0,"published":{"WM_GPS_NEW_DATA":12,"WM_GPS_NEW_RAW_DATA":0,)"
      R"("WM_GPS_NEW_EPHEMERIS":0,"WM_GPS_NEW_BIN":0}}})"
      "\n");
}

TEST_F(HostDecode, GivesTheSameRecordsInChunksOfAnySizeWithLineEndsOrWithout) {
  options_.format = Format::record;
  Decoded(Stream());  // leaves in the library's one working record what every further run finds there
  const std::string whole = Decoded(Stream());
  std::string log = Stream();
  std::erase(log, '\r');
  log.pop_back();  // the last line of a log may lack its end
  for (const int chunk : {1, 7, 64, 100, 4096}) {
    options_.chunk = chunk;
    for (const std::string& recording : {Stream(), log}) EXPECT_EQ(Decoded(recording), whole) << chunk;
  }
}

TEST_F(HostDecode, TakesHeightsAsTheyAreSetUpAndDatesARecordingByItself) {
  options_.antenna_height = 2.0;
  options_.geoid = Geoid::add;
  options_.format = Format::json;
  const std::string text = Decoded(Stream() + WithChecksum("$GPZDA,123512,31,12,1998,00,00"));
  EXPECT_NE(text.find("\"altHAE\":590.3000"), std::string::npos) << text;
  EXPECT_NE(text.find("\"time\":\"1998-12-31T12:35:10.000Z\""), std::string::npos) << text;
  options_.format = Format::none;
  EXPECT_TRUE(Decoded("").starts_with("{\"summary\":{\"messages\":0,"));
}
