#include "gpsengine/drivers/sirf.h"

#include <cstdio>

#include "tests/support/drivertest.h"

namespace {

// A driver whose baud rate is its own default, as after a start of the engine.
template <class Receiver>
class SirfFamily : public DriverTest<Receiver> {
 protected:
  SirfFamily() {
    this->app.SetProfilePath(profile.c_str());
    this->receiver.SetProperties();
  }
  ~SirfFamily() override { std::remove(profile.c_str()); }

  const std::string profile =
      testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".ini";
};
using SirfReceivers = testing::Types<CSirf, CHolux, CToughbookGPS01>;
TYPED_TEST_SUITE(SirfFamily, SirfReceivers);
using SirfDriver = SirfFamily<CSirf>;

constexpr auto kFullNmea = R"(
    write "$PSRF103,00,00,02,01*26\r\n"; wait 400
    write "$PSRF103,02,00,02,01*24\r\n"; wait 400
    write "$PSRF103,05,00,02,01*23\r\n"; wait 400
    write "$PSRF103,03,00,02,01*25\r\n"; wait 400
    write "$PSRF103,04,00,00,01*20\r\n"; wait 400
    write "$PSRF103,01,00,00,01*25\r\n"; wait 400
    )";
constexpr auto kGgaOnlyNmea = R"(
    write "$PSRF103,00,00,02,01*26\r\n"; wait 400
    write "$PSRF103,02,00,00,01*26\r\n"; wait 400
    write "$PSRF103,05,00,00,01*21\r\n"; wait 400
    write "$PSRF103,03,00,00,01*27\r\n"; wait 400
    write "$PSRF103,04,00,00,01*20\r\n"; wait 400
    write "$PSRF103,01,00,00,01*25\r\n"; wait 400)";

constexpr auto kToBinary = R"(write "$PSRF100,0,4800,8,1,0*0F\r\n"; wait 3000
    )";
constexpr auto kToNmea =
    "write-hex A0A200188102"
    "0000000000000000000000000000000000000000"
    "12C00155B0B3; wait 3000\n";

// From NMEA to the chip's binary protocol, where the source is set, and back.
std::string SetSource(const std::string& sourceFrame) {
  return std::string(kToBinary) + "write-hex " + sourceFrame + "; wait 3000\n" + kToNmea + kFullNmea;
}
const std::string kSourceOff =
    "A0A200078500000000000000"
    "85B0B3";
const std::string kSourceWaas =
    "A0A200078501000000000000"
    "86B0B3";

}  // namespace

TYPED_TEST(SirfFamily, SetsOutputAndSource) {
  const auto to = [](DgpsMode mode) { return [mode](auto& r) { r.SetDgpsMode(mode); }; };
  const std::string off = SetSource(kSourceOff), waas = SetSource(kSourceWaas);
  this->Check({
      {[](auto& r) { r.SetDefaultNMEA(); }, kFullNmea},
      {[](auto& r) { r.SetGgaOnlyNMEA(); }, kGgaOnlyNmea},
      {to(DGPS_MODE_NONE), off},
      {to(DGPS_MODE_BEACON), off},
      {to(DGPS_MODE_WAAS), waas},
      {to(DGPS_MODE_OMNISTAR), off},
      {[](auto& r) { r.SetBeacon(BEACON_MODE_AUTO, "", ""); }, ""},
  });
}

TYPED_TEST(SirfFamily, IsForcedBackToNmeaByAReset) {
  const std::string reset = this->Joined(std::string(kToNmea) + kFullNmea + "result true");
  EXPECT_EQ(this->Steps([](auto& r) { return r.ResetAll(true); }), reset);
  EXPECT_EQ(this->Steps([](auto& r) { return r.ResetAll(false); }), reset);
  this->Unplug();
  EXPECT_EQ(this->Steps([](auto& r) { return r.ResetAll(false); }), "result false");
}

// The message has 16 bits for the rate, so that the highest bit of 115200 does not fit.
TEST_F(SirfDriver, NamesTheBaudRateInBothDirections) {
  receiver.SaveDifferentSettings(115200);
  const std::string steps = Steps([](auto& r) { r.SetDgpsMode(DGPS_MODE_NONE); });
  EXPECT_NE(steps.find(R"(write "$PSRF100,0,115200,8,1,0*04\r\n"; wait 3000)"), std::string::npos) << steps;
  EXPECT_NE(steps.find("C2000145B0B3"), std::string::npos) << steps;
}

TEST(SirfFrame, ChecksumKeeps15BitsOfTheSum) {
  struct Sirf : CSirf {
    using CSirf::CheckSum;
  } sirf;
  const std::vector<unsigned char> payload(129, 0xFE);  // 129 x 254 = 32766
  EXPECT_EQ(sirf.CheckSum(payload.data(), 129), 0x7FFE);
  std::vector<unsigned char> more(payload);
  more.push_back(3);  // 32769 = 0x8001
  EXPECT_EQ(sirf.CheckSum(more.data(), 130), 1);
}

TEST(SirfSentence, GetsTheChecksumOfWhatStandsBehindItsDollar) {
  CString sentence = "noise $PSRF103,00,00,02,01", noSentence = "PSRF103";
  EXPECT_TRUE(AppendNmeaChecksum(sentence));
  EXPECT_EQ(sentence, "noise $PSRF103,00,00,02,01*26");
  EXPECT_FALSE(AppendNmeaChecksum(noSentence));
  EXPECT_EQ(noSentence, "PSRF103");
}
