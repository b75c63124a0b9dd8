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
  static std::vector<WORD> List(const CWordArray& words) {
    return {words.GetData(), words.GetData() + words.GetSize()};
  }
  std::vector<WORD> Words() const {
    CWordArray words;
    receiver.GetBinWords(words);
    return List(words);
  }
  /// What the message that the host took last stands for.
  std::vector<WORD> HostWords() const { return List(receiver.m_BinWords); }
};

TEST_F(Axis3Report, BinaryBlocksReachTheHostAsWords) {
  for (const auto& [number, dataLength] : {std::pair(95, 128), std::pair(96, 300)}) {
    const std::string block = Bin(number, dataLength, dataLength + 12);
    EXPECT_TRUE(FeedBinary(block));
    const auto words = Words();
    ASSERT_EQ(static_cast<int>(words.size()), (dataLength + 12) / 2);
    for (std::size_t i = 0; i < words.size(); ++i)
      EXPECT_EQ(words[i], static_cast<BYTE>(block[2 * i]) + 256 * static_cast<BYTE>(block[2 * i + 1])) << i;
    EXPECT_EQ(HostWords(), words);
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

TEST_F(Axis3Report, EachMessageStandsForItsOwnBlock) {
  const std::string first = Bin(95, 128, 140), second = Bin(96, 300, 312);
  receiver.AttachRawData(first.data(), 140);
  CString text("$BIN_\n");
  EXPECT_TRUE(receiver.Parse(text));
  receiver.AttachRawData(second.data(), 312);
  EXPECT_TRUE(receiver.Parse(text));
  EXPECT_TRUE(HostWords().empty()) << "no message has been taken yet";
  for (const std::size_t words : {70u, 156u}) {
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, PM_NOREMOVE));
    ASSERT_TRUE(PeekMessageW(&message, PM_REMOVE));
    EXPECT_EQ(message.message, WM_GPS_NEW_BIN);
    EXPECT_EQ(message.wParam, 0u);
    EXPECT_EQ(HostWords().size(), words);
  }
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
  EXPECT_EQ(feed(6), "wait 200; wait 200");  // on a closed port too
  EXPECT_EQ(receiver.GetBinaryMessages(), 39);
  receiver.SetRawDataOutput(true, 5);
}

TEST_F(Axis3Report, OemMessagesReachTheHostAsWords) {
  const std::string message("\xAA\x44\x12\x1C\x00\xFF\x01", 7);
  EXPECT_FALSE(FeedBinary(message)) << "no record goes with them";
  EXPECT_EQ(Words(), (std::vector<WORD>{0x44AA, 0x1C12, 0xFF00}));
  EXPECT_EQ(window.blocks, 1);
  EXPECT_EQ(receiver.GetBinaryMessages(), 0);
  receiver.AttachRawData(nullptr, 0);
  EXPECT_EQ(TraceOf([&] { EXPECT_FALSE(Feed(message)); }), kTraceBuilt ? "BIN length 0\n" : "");
  EXPECT_EQ(window.blocks, 1);
}

}  // namespace
