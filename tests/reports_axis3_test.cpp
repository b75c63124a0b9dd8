#include "gpsengine/drivers/sokkiaaxis3.h"
#include "tests/support/receivertest.h"

namespace {

class Axis3Report : public ReceiverTest<CSokkiaAxis3> {
 protected:
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

}  // namespace
