#include "gpsengine/link/binbuffer.h"
#include "tests/support/basics.h"

#include <stdexcept>

namespace {

using namespace std::string_literals;

const std::string kGga = "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n";
const std::string kVtg = "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K*48\r\n";

// A frame of the Ashtech kinds, with bytes in its body that start or end messages elsewhere.
std::string Ashtech(const char* kind, std::size_t length) {
  std::string frame = "$PASHR,"s + kind + ",";
  while (frame.size() < length - 1) frame += "$#\r\n\0*"s[frame.size() % 6];
  return frame + '\r';
}

std::string Block(char number, std::size_t length) {
  std::string block = "$BIN"s + number + '\0';
  block.resize(length, '$');
  return block;
}

std::string Oem(std::size_t header, std::size_t body) {
  std::string message = "\xAA\x44\x12"s;
  message.resize(header + body + 4, '#');
  message[3] = static_cast<char>(header);
  message[8] = static_cast<char>(body & 0xFF);
  message[9] = static_cast<char>(body >> 8);
  return message;
}

// A consumer of the stream, as the engine is one.
class Stream {
 public:
  void Feed(std::string_view bytes) {
    CBinBuffer chunk(bytes.data(), static_cast<int>(bytes.size()));
    buffer += chunk;
    for (bool more = buffer.GetCurrentMessage(); more && buffer.HasMessage(); more = buffer.Next()) {
      int length = 0;
      const char* message = buffer.GetMessageBin(length);
      messages.emplace_back(message, static_cast<std::size_t>(length));
      texts.push_back(buffer.GetMessageW().ToUtf8());
    }
    buffer.Resize();
  }
  CBinBuffer buffer;
  std::vector<std::string> messages;
  std::vector<std::string> texts;
};

TEST(BinBuffer, TakesSentencesOutOfNoiseAndKeepsAnUnfinishedOne) {
  Stream stream;
  stream.Feed("\x01\xFFgarbage" + kGga + kVtg + "$GPGS");
  EXPECT_EQ(stream.texts, (std::vector{kGga, kVtg}));
  EXPECT_EQ(stream.messages[0] + '\n', kGga);
  EXPECT_EQ(stream.buffer.GetLength(), 5);
  EXPECT_EQ(stream.buffer.GetAt(0), '$');
  stream.Feed("V,1,1,00*79\r\n");
  EXPECT_EQ(stream.texts.back(), "$GPGSV,1,1,00*79\r\n");
  EXPECT_EQ(stream.buffer.GetLength(), 0);
}

TEST(BinBuffer, HoldsBackABinaryMessageUntilItsLastByte) {
  const std::string rows[] = {Ashtech("MBN", 54), Ashtech("mca", 49),  Ashtech("PBN", 68),
                              Ashtech("SAL", 82), Ashtech("SNV", 144), Block(95, 140),
                              Block(96, 312),     Oem(25, 0),          Oem(28, 1000)};
  for (const std::string& message : rows) {
    Stream stream;
    for (std::size_t i = 0; i + 1 < message.size(); ++i) {
      // The three sync bytes have to come together.
      if (i == 0 && message[0] == '\xAA') {
        stream.Feed(message.substr(0, 3));
        i = 2;
      } else {
        stream.Feed(message.substr(i, 1));
      }
      ASSERT_FALSE(stream.buffer.GetCurrentMessage()) << message.size() << " at " << i;
      ASSERT_TRUE(stream.messages.empty()) << message.size() << " at " << i;
    }
    stream.Feed(message.substr(message.size() - 1));
    ASSERT_EQ(stream.messages, std::vector{message});
  }
}

TEST(BinBuffer, TakesEachMessageForWhatItsHeadSays) {
  const std::string ack = "$PASHR,ACK*3D\r\n", head = "$PASHR,PBN,*$#\r\n\n",
                    oem = CString("\xAA\x44\x12\x1C####\x11\n").ToUtf8();
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      // A log ends at the next one even without a line end.
      {"#ECUTOFFA,COM1,0;5.0*AB#WAAS1A,COM1,0;X*12\r\n" + kGga,
       {"#ECUTOFFA,COM1,0;5.0*AB\n", "#WAAS1A,COM1,0;X*12\r\n", kGga}},
      {"##A,1,2\r\n#BIN_,1*12\r\n" + kGga, {"#\n", "#A,1,2\r\n", "#BIN_,1*12\r\n", kGga}},
      {"$PMD\r\n$BINx\r\n", {"$PMD\r\n", "$BINx\r\n"}},  // no number of a block: a text
      {"$BIN,\r\n", {"$BIN,\r\n"}},
      {"noise" + Oem(28, 17) + kVtg, {oem, kVtg}},
      {ack, {}},  // with one comma it waits for another
      {ack + kGga, {ack, kGga}},
      {kGga + Ashtech("PBN", 68) + "\n" + kVtg + Block(95, 140) + "\n" + kGga + Oem(28, 17) + kVtg,
       {kGga, head, kVtg, "$BIN_\n", kGga, oem, kVtg}},
  };
  for (const auto& [bytes, texts] : rows) {
    Stream stream;
    stream.Feed(bytes);
    EXPECT_EQ(stream.texts, texts);
    EXPECT_FALSE(stream.buffer.GetCurrentMessage() || stream.buffer.HasMessage());
  }
  CBinBuffer two((kGga + kVtg).c_str(), static_cast<int>((kGga + kVtg).size()));
  EXPECT_TRUE(two.First() && two.Next() && two.First());
  EXPECT_EQ(two.GetMessageW().ToUtf8(), kGga);
}

TEST(BinBuffer, EndsItsTextAtAZeroByteAndAppendsALineFeed) {
  CBinBuffer buffer("abc\0def", 7);
  EXPECT_EQ(buffer.Mid(0, 7), "abc\n");
  EXPECT_EQ(buffer.Mid(4, 0), "def\n");
  EXPECT_EQ(buffer.Mid(4, 2), "de\n");
  EXPECT_EQ(buffer.Mid(-1, 2), "");
  EXPECT_EQ(buffer.Mid(8, 2), "");
  EXPECT_EQ(*std::unique_ptr<CString>(buffer.Mid2(4, 1)), "d\n");
  EXPECT_EQ(*std::unique_ptr<CString>(buffer.GetMessageAsPtr()), "");
  EXPECT_EQ(buffer.Find('d', 0), 4);
  EXPECT_TRUE(buffer.Find('d', 5) == -1 && buffer.Find('d', -1) == -1);
  EXPECT_EQ(buffer.GetMessageW(), "");
}

TEST(BinBuffer, MakesBytesTheCurrentMessageAndRefusesNone) {
  CBinBuffer buffer;
  for (const auto& [bytes, size] : {std::pair<const char*, int>(nullptr, 3), {"xyz", 0}}) {
    int length = -1;
    EXPECT_TRUE(buffer.Set("xyz", 3, 3));
    EXPECT_NE(buffer.GetMessageBin(length), nullptr);
    EXPECT_EQ(length, 3);
    EXPECT_FALSE(buffer.Set(bytes, size, size));
    EXPECT_FALSE(buffer.HasMessage());
    EXPECT_EQ(buffer.GetLength(), 0);
    EXPECT_EQ(buffer.GetMessageBin(length), nullptr);
  }
  CBinBuffer waiting("$GPXXX without a comma", 22);
  waiting.Append(nullptr, 3);
  waiting.Append("x", -1);
  EXPECT_EQ(waiting.GetLength(), 22);
  EXPECT_FALSE(waiting.GetCurrentMessage());
  waiting.Set("$PASHR,MBN,half of what\r\n it is", 32, 0);
  EXPECT_FALSE(waiting.GetCurrentMessage());
}

TEST(BinBuffer, LetsItsBytesBeWritten) {
  CBinBuffer buffer = CString("$GPXXX;1\r\n");
  CString tag, subTag;
  EXPECT_TRUE(buffer.GetCurrentMessage() && buffer.GetTag(tag, subTag));
  EXPECT_EQ(tag + "/" + subTag, "$GPX/");
  buffer[6] = ',';
  buffer.SetSize(12);
  buffer[10] = buffer[11] = ',';
  EXPECT_TRUE(buffer.GetTag(tag, subTag));
  EXPECT_EQ(tag + "/" + subTag, "$GPXXX/1\r\n");
  buffer.First();
  buffer.SetSize(4);
  int length = 0;
  ASSERT_NE(buffer.GetMessageBin(length), nullptr);
  EXPECT_EQ(length, 4);
  EXPECT_THROW(buffer[4], std::out_of_range);
  buffer.Set("$A,1,2\r\n$B,1,2\r\n", 16, 0);
  EXPECT_TRUE(buffer.First() && buffer.Next());
  buffer.SetSize(4);
  EXPECT_FALSE(buffer.HasMessage()) << "before which it was cut";
}

TEST(BinBuffer, TellsTheTagOfTheMessageAtHand) {
  CString tag;
  CString subTag;
  CBinBuffer text("..$PASHR,MBN,x", 14);
  EXPECT_TRUE(text.GetTag(tag, subTag));
  EXPECT_EQ(tag, "$PASHR");
  EXPECT_EQ(subTag, "MBN");
  const std::string message = Oem(28, 0);
  CBinBuffer oem(message.data(), static_cast<int>(message.size()));
  EXPECT_TRUE(oem.GetTag(tag, subTag));
  EXPECT_EQ(tag, "Axis4OEMBinaryTagPlaceHolder");
  CBinBuffer block("$BIN_\x42", 6);
  EXPECT_TRUE(block.GetTag(tag, subTag));
  EXPECT_EQ(tag, "$BIN");
  for (const char* unfinished : {"$PASHR,MB", "$BIN"})
    EXPECT_FALSE(CBinBuffer(CString(unfinished)).GetTag(tag, subTag));
}

}  // namespace
