#include <optional>

#include "gpsengine/drivers/sokkiaaxis3.h"
#include "tests/support/receivertest.h"

namespace {

class Axis3Report : public ReceiverTest<CSokkiaAxis3> {
 protected:
  const CGPSStatusData& Accepted(std::string_view message) {
    EXPECT_TRUE(Feed(message)) << message;
    return Last().m_Status;
  }
  /// What a refused message has left behind, sent out with an acknowledgement.
  const CGPSStatusData& Refused(std::string_view message) {
    const std::size_t before = Published();
    EXPECT_FALSE(Feed(message)) << message;
    EXPECT_EQ(Published(), before) << message;
    return Accepted("$PASHR,ACK*3D\r\n");
  }
  /// A block with `dataLength` in its head, `size` bytes long.
  static std::string Bin(int number, int dataLength, int size) {
    std::string block = "$BIN";
    for (const int value : {number, dataLength})
      (block += static_cast<char>(value)) += static_cast<char>(value >> 8);
    while (static_cast<int>(block.size()) < size) block += static_cast<char>(block.size());
    return block;
  }
  std::vector<WORD> Words() const {
    CWordArray words;
    receiver.GetBinWords(words);
    return {words.GetData(), words.GetData() + words.GetSize()};
  }
};

TEST_F(Axis3Report, JshowNamesTheSourceOfCorrections) {
  constexpr struct {
    const char* value;
    DgpsMode mode;
  } kSources[] = {{"BEACON", DGPS_MODE_BEACON},
                  {"LBAND,1", DGPS_MODE_LBAND},
                  {"WAAS\r\n", DGPS_MODE_WAAS},
                  {"NONE", DGPS_MODE_NONE},
                  {"beacon", DGPS_MODE_NONE}};
  for (const auto& source : kSources) {
    const auto& status = Accepted(std::string("$>JSHOW,DIFF,") + source.value);
    EXPECT_TRUE(status.m_bDgpsModeValid);
    EXPECT_EQ(status.m_nDgpsMode, source.mode) << source.value;
  }
}

TEST_F(Axis3Report, JshowNamesOneSentenceALine) {
  constexpr NmeaMsgStatus CGPSStatusData::*kFields[] = {
      &CGPSStatusData::m_nNmeaGGA, &CGPSStatusData::m_nNmeaGSA, &CGPSStatusData::m_nNmeaZDA,
      &CGPSStatusData::m_nNmeaGLL, &CGPSStatusData::m_nNmeaVTG, &CGPSStatusData::m_nNmeaGSV,
      &CGPSStatusData::m_nNmeaSAT};
  constexpr const char* kNames[] = {"GPGGA", "GPGSA", "GPZDA", "GPGLL", "GPVTG", "GPGSV"};
  for (std::size_t i = 0; i < std::size(kNames); ++i) {
    const auto& status = Accepted(std::string("$>JSHOW,ASC,") + kNames[i] + "x,1.0,PORTA\r\n");
    EXPECT_TRUE(status.m_bNmeaStatusValid);
    for (std::size_t k = 0; k < std::size(kFields); ++k)
      EXPECT_EQ(status.*kFields[k], k == i ? NMEA_MSG_ON : NMEA_MSG_NO_REPORT) << kNames[i] << k;
  }
  for (const char* unknown : {"GPRMC", "GPSAT", "gpgga"})
    EXPECT_FALSE(Refused(std::string("$>JSHOW,ASC,") + unknown).m_bNmeaStatusValid);
}

TEST_F(Axis3Report, JshowMaskAndLbandTuning) {
  auto status = Accepted("$>JSHOW,MASK,12\r\n");
  EXPECT_TRUE(status.m_bElevationMaskValid);
  EXPECT_EQ(status.m_nElevationMask, 12);
  EXPECT_EQ(status.m_nLbandMode, 0);
  EXPECT_EQ(Accepted("$>JSHOW,FREQ,0.0").m_nLbandMode, 1);
  EXPECT_EQ(Accepted("$>JSHOW,FREQ,1557.8450").m_nLbandMode, 2);

  for (const char* bad : {"$>JSHOW,MASK,abc", "$>JSHOW,FREQ,abc", "$>JSHOW,FOO,1", "$>JSHOW,mask,9",
                          "$>JSHOW,MASK", "$>JSHOW,FOO", "$>JSHOW"}) {
    status = Refused(bad);
    EXPECT_FALSE(status.m_bElevationMaskValid) << bad;
    EXPECT_EQ(status.m_nElevationMask, 12) << bad;
    EXPECT_EQ(status.m_nLbandMode, 0) << bad;
  }
}

TEST_F(Axis3Report, TextsGoToTheHostAsTheyCameOnce) {
  for (const char* text :
       {"$>JI,412345,1,7\r\n", "$>JGEO,SENT=1575.4200,USED=1575.4200\r\n", "$RD1,314200,1450\r\n"}) {
    const auto status = Accepted(text);
    EXPECT_TRUE(status.m_bTextValid);
    EXPECT_STREQ(status.m_szText, text);
    EXPECT_FALSE(Accepted("$PASHR,ACK*3D\r\n").m_bTextValid);
  }
  const std::string longText = "$>JI," + std::string(100, 'x');
  EXPECT_EQ(std::string(Accepted(longText).m_szText), longText.substr(0, 79));
}

TEST_F(Axis3Report, BinaryBlocksReachTheHostAsWords) {
  for (const auto& [number, dataLength] : {std::pair(95, 128), std::pair(96, 300)}) {
    const std::string block = Bin(number, dataLength, dataLength + 12);
    EXPECT_TRUE(FeedBinary(block));
    const auto words = Words();
    ASSERT_EQ(static_cast<int>(words.size()), (dataLength + 12) / 2);
    for (std::size_t i = 0; i < words.size(); ++i)
      EXPECT_EQ(words[i], static_cast<BYTE>(block[2 * i]) + 256 * static_cast<BYTE>(block[2 * i + 1])) << i;
  }
  EXPECT_EQ(window.blocks, 2);
  EXPECT_EQ(receiver.GetBinaryMessages(), 2);
  EXPECT_EQ(Published(), 0U);

  EXPECT_FALSE(FeedBinary(Bin(95, 129 + 1, 140)));  // more data than the frame has
  EXPECT_TRUE(Words().empty());
  EXPECT_TRUE(FeedBinary(Bin(95, 129, 140)));  // an odd byte is left out
  EXPECT_EQ(Words().size(), 70U);
  EXPECT_FALSE(FeedBinary("$BIN_"));
  receiver.AttachRawData(nullptr, 0);
  EXPECT_FALSE(Feed("$BIN_\n"));
  EXPECT_EQ(window.blocks, 3);
  EXPECT_EQ(receiver.GetBinaryMessages(), 3);
}

TEST_F(Axis3Report, RenewsTheBlockOutputAboutEveryThreeSeconds) {
  const std::string block = Bin(95, 128, 140);
  const auto feed = [&](int count) {
    line.ForgetSteps();
    for (int i = 0; i < count; ++i) FeedBinary(block);
    return line.Transcript();
  };
  receiver.SetRawDataOutput(true, 5);
  EXPECT_EQ(feed(14), "");
  EXPECT_EQ(feed(1), R"(write "$JBIN,95,0.2\r\n"; wait 200)");
  EXPECT_EQ(feed(14), "");
  EXPECT_EQ(feed(1), R"(write "$JBIN,95,0.2\r\n"; wait 200)");
  receiver.SetRawDataOutput(true, 1);
  EXPECT_EQ(feed(2), "");
  EXPECT_EQ(feed(1), R"(write "$JBIN,95,1\r\n"; wait 200)");
  receiver.Suspend();
  EXPECT_EQ(feed(6), "");  // no receiver on the line, none to wait for
  EXPECT_EQ(receiver.GetBinaryMessages(), 39);
  receiver.SetRawDataOutput(true, 5);
}

TEST_F(Axis3Report, OemMessagesReachTheHostAsWords) {
  const std::string message("\xAA\x44\x12\x1C\x00\xFF\x01", 7);
  FeedBinary(message);
  EXPECT_EQ(Words(), (std::vector<WORD>{0x44AA, 0x1C12, 0xFF00}));
  EXPECT_EQ(window.blocks, 1);
  EXPECT_EQ(receiver.GetBinaryMessages(), 0);
  receiver.AttachRawData(nullptr, 0);
  EXPECT_FALSE(Feed(message));
  EXPECT_EQ(window.blocks, 1);
}

TEST_F(Axis3Report, SentenceThatNoDecoderClaimsIsKeptForOneRecord) {
  constexpr struct {
    std::size_t length;
    bool kept;
  } kLengths[] = {{9, false}, {82, true}, {79, true}, {10, true}, {83, false}};
  for (const auto& [length, kept] : kLengths) {
    const std::string sentence = "$PGRME" + std::string(length - 6, '\xE9');
    EXPECT_EQ(Feed(sentence), kept) << length;
    if (!kept) continue;
    EXPECT_TRUE(Last().m_bProprietaryValid);
    std::string expected = sentence.substr(0, 79);
    expected.resize(79);
    EXPECT_EQ(std::string(Last().m_szProprietary, 79), expected);
  }
  Accepted("$PASHR,ACK*3D\r\n");
  EXPECT_FALSE(Last().m_bProprietaryValid);
}

TEST_F(Axis3Report, UnclaimedSentenceTakesThePlaceOfWhatIsUnderWay) {
  FeedSentence("$GPGSV,1,1,01,04,36,112,47");
  FeedSentence("$GPVTG,90,T,,M,,N,36,K");
  FeedSentence("$GPGSA,A,3,04,,,,,,,,,,,,2.0,1.0,1.7");
  Feed("$PASHR,ACK*3D\r\n");
  ASSERT_TRUE(Last().m_bVelocityValid && Last().m_bDOPValid && Last().m_bSatellitesComplete);
  FeedSentence("$PGRME,12.0,M,18.5,M,22.1,M");
  EXPECT_FALSE(Last().m_bVelocityValid || Last().m_bDOPValid || Last().m_bSatellitesComplete);
}

}  // namespace
