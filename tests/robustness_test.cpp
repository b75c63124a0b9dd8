// What the line may do to a stream: cut it anywhere, put rubbish into it, send numbers beyond all measure.
#include <random>

#include "host/records/recordsink.h"
#include "tests/support/conversation.h"
#include "tests/support/enginetest.h"

using namespace std::string_literals;

namespace {

constexpr std::string_view kOemSync = "\xAA\x44\x12";

using Cutter = std::function<std::size_t()>;

/// Plays recordings to an engine on one thread, with everything on that a host may want.
class ArrivalTest : public testing::Test {
 protected:
  /// All that the engine publishes for these bytes, in order, as text.
  std::string Answer(const std::string& model, std::string_view bytes, const Cutter& next) {
    CGPSReceiver::RecordLock()->Reset();
    const CRehearsal standstill;  // the moments of publication are all the same
    CGPSEngine engine;
    engine.SetReceiver(engine.FindReceiver(CString::FromUtf8(model)));
    engine.m_bAttachRawData = true;
    engine.m_ComBuffer.m_bPaused = false;
    AnswerWindow window;
    app.SetMainWnd(&window);
    while (!bytes.empty()) {
      const std::string_view piece = bytes.substr(0, LengthAt(bytes, std::min(next(), bytes.size())));
      CBinBuffer chunk(piece.data(), static_cast<int>(piece.size()));
      engine.UpdateGPSBuffer(chunk);
      window.Drain();
      bytes.remove_prefix(piece.size());
    }
    return window.text;
  }

 private:
  class AnswerWindow : public HostWindow {
   public:
    std::string text;

   private:
    void OnNewData(const CGPSData& data) override {
      gps::FixReader reader;
      sink_.OnData(host::ReadRecord(reader, data));
    }
    void OnNewString(const CString& message) override { text += message.ToUtf8(); }
    void OnNewRawData(const CGPSDataRaw& epoch) override { sink_.OnRawData(epoch); }
    void OnNewEphemeris(const CGPSDataEphemeris& ephemeris) override { sink_.OnEphemeris(ephemeris); }
    void OnNewBin() override { sink_.OnBin(host::Block()); }

    host::RecordSink sink_{text};
  };

  // A message whose sync bytes come in two reads is lost, which is known; so no cut goes through them.
  static std::size_t LengthAt(std::string_view bytes, std::size_t length) {
    for (std::size_t inside = 1; inside < kOemSync.size(); ++inside) {
      if (length >= inside && bytes.substr(length - inside).starts_with(kOemSync))
        return length - inside + kOemSync.size();
    }
    return length;
  }

  CWinApp app{"gpsengine-test"};
};

// The byte after a block is passed over if it has come with the block, and a message loses its head that
// way; so here is one to pass over.
std::string WithAByteBehindBlocks(std::string bytes) {
  for (std::size_t at = 0; (at = bytes.find("$BIN", at)) != bytes.npos;) {
    at += bytes[at + 4] == '_' ? 140 : 312;
    if (at >= bytes.size()) break;
    bytes.insert(at, 1, '\n');
  }
  return bytes;
}

TEST_F(ArrivalTest, OfAStreamInAnyPiecesGivesTheSameRecords) {
  constexpr std::size_t kMost = 15000;  // in one piece; the stream takes not much more
  for (const std::string& model : simulator::Models()) {
    CGPSEngine engine;
    std::string heard = WithAByteBehindBlocks(Talk(*engine.FindReceiver(CString::FromUtf8(model))).heard);
    if (heard.size() > kMost) heard.erase(0, heard.size() - kMost);
    const std::string whole = Answer(model, heard, [] { return kMost; });
    ASSERT_GT(whole.size(), 2000u) << model;
    ASSERT_EQ(Answer(model, heard, [] { return 1; }), whole) << model << ", byte by byte";
    std::minstd_rand random(model.size());
    for (const unsigned longest : {10u, 300u, 5000u}) {
      ASSERT_EQ(Answer(model, heard, [&] { return 1 + random() % longest; }), whole)
          << model << ", pieces of up to " << longest;
    }
  }
}

/// Sentences that tell each other apart by their time of day, and what is lost of them.
class GarbageTest : public EngineTest {
 protected:
  static constexpr int kBefore = 4, kAfter = 12;

  // How many of the sentences are lost with this between them, the stream coming in such pieces.
  int Lost(const std::string& garbage, std::size_t pieces) {
    std::string stream;
    for (int i = 0; i < kBefore; ++i) stream += FixAt(i);
    stream += garbage;
    for (int i = 0; i < kAfter; ++i) stream += FixAt(kBefore + i);
    window.records.clear();
    for (std::size_t at = 0; at < stream.size(); at += pieces) Feed(stream.substr(at, pieces));
    return kBefore + kAfter - static_cast<int>(window.records.size());
  }
};

TEST_F(GarbageTest, CostsNoSentenceBeyondWhatTheFramingTakesWithIt) {
  struct Row {
    const char* what;
    std::string garbage;
    int lost;
    int lostByteByByte = -1;  // if not the same
  };
  const Row rows[] = {
      {"noise", "\x01\xFF\x80 rubbish \xAA\x44", 0},
      {"zeros", std::string(300, '\0'), 0},
      {"the tail of a sentence", ",N,01131.000,E*47\r\n", 0},
      {"half a sentence and a line end", "$GPGGA,0000\r\n", 0},
      {"a dollar and a line end", "$\r\n", 0},
      {"a number sign and a line end", "#\r\n", 0},
      {"a port prompt", "[COM1]", 0},
      {"a message that is all prompt", "$[COM2]\r\n", 0},
      {"no line end for long", std::string(20000, 'x'), 0},
      {"no line end for long, within a sentence", "$,," + std::string(20000, 'x'), 0},
      {"no end of zeros, within a sentence", "$,," + std::string(20000, '\0'), 0},
      // A text ends at the next carriage return, be it that of another sentence.
      {"an unfinished sentence", "$GPGGA,0000", 1},
      {"a dollar alone", "$", 1},
      {"a number sign alone", "#", 1},
      {"a number sign twice", "##", 1},
      // With a prompt in it, it is the sentence after the prompt.
      {"an unfinished sentence and a prompt", "$GP[COM1]", 0},
      // The byte after a text or a block counts as its line feed, if it comes in the same read.
      {"a sentence without a line feed", "$GPRMC,1,2\r", 1, 0},
      {"a block of which nothing follows", "$BIN_" + std::string(135, 'x'), 1, 0},
      // Who names a record of fixed length in the second field takes that length: of the 67 bytes a sentence
      // 47, 61, 137.
      {"the head of a measurement", "$X,MBN,", 1},
      {"the head of a position", "$X,PBN,", 1},
      {"the head of an ephemeris", "$X,SNV,", 3},
      {"the head of block 95", "$BIN_", 3},
      {"the head of block 96", "$BIN`", 5},
      // An OEM header takes what it says, here 28 + 100 + 4 bytes, and no line feed.
      {"an OEM header", "\xAA\x44\x12\x1C\0\0\0\0\x64\0"s, 2},
      {"an OEM header in zeros", "\xAA\x44\x12"s + std::string(40, '\0'), 0},
  };
  ASSERT_EQ(FixAt(0).size(), 67u);
  for (const Row& row : rows) {
    EXPECT_EQ(Lost(row.garbage, 500), row.lost) << row.what;
    if (!row.garbage.starts_with(kOemSync)) {
      EXPECT_EQ(Lost(row.garbage, 1), row.lostByteByByte < 0 ? row.lost : row.lostByteByByte)
          << row.what << ", byte by byte";
    }
  }
}

class ExtremesTest : public ReceiverTest<> {
 protected:
  bool FeedFix(const std::string& time, const std::string& latitude,
               const std::string& tail = "545.4,M,46.9,M,,") {
    return FeedSentence("$GPGGA," + time + ',' + latitude + ",N,01131.000,E,1,08,0.9," + tail);
  }
};

TEST_F(ExtremesTest, OfWhatIsReadStayNumbersAndDoNotLinger) {
  receiver.SetupReceiver(1, 1, 0.0, "", false);
  EXPECT_TRUE(FeedFix("000000", "4807.038", "1e308,M,1e308,M,,"));
  EXPECT_EQ(Last().m_dAltitude, 1e308) << "a separation that would overflow is none";
  for (const auto& [time, latitude] :
       {std::pair("000000", "1e308"), {"1e308", "-1e308"}, {"-1e308", "1e308"}})
    EXPECT_TRUE(FeedFix(time, latitude));
  receiver.ResetSpeedEngine();
  for (const auto& [time, latitude] : {std::pair("1e-320", "4807.038"), {"2e-320", "4807.738"}})
    EXPECT_TRUE(FeedFix(time, latitude));
  for (const std::string course : {"1e308", "-1e308"}) {
    FeedSentence("$GPVTG," + course + ",T,,M,,N,1e308,K");
    EXPECT_TRUE(FeedFix("000000", "4807.038"));
    EXPECT_EQ(Last().m_dSpeed, 1e308 / 3.6);
  }
  for (const CGPSData& data : window.records)
    for (const double number :
         {data.m_dLatitude, data.m_dLongitude, data.m_dAltitude, data.m_dTimeOfDay, data.m_dSpeed,
          data.m_dHeading, data.m_dLocalNorth, data.m_dLocalEast, data.m_dAverageSNR})
      ASSERT_TRUE(std::isfinite(number));

  receiver.Initialize();  // a VTG silences the estimator
  for (const char* time : {"000001", "000002", "000003", "000004", "000005"})
    EXPECT_TRUE(FeedFix(time, "4807.038"));
  EXPECT_TRUE(Last().m_bVelocityValid);
  EXPECT_EQ(Last().m_dSpeed, 0.0);
}

TEST_F(ExtremesTest, OfATextAreCutAndNeverAFormat) {
  EXPECT_TRUE(Feed("$>JI,%s%n%x%1000000d\r\n"));
  EXPECT_STREQ(Last().m_Status.m_szText, "$>JI,%s%n%x%1000000d\r\n");
  EXPECT_TRUE(Feed("$RD1," + std::string(5000, '9') + "\r\n"));
  EXPECT_EQ(std::strlen(Last().m_Status.m_szText), sizeof Last().m_Status.m_szText - 1);
  TraceOf([this] { EXPECT_FALSE(Feed("$PASHR,%s%n," + std::string(100, 'n'))); });
}

}  // namespace
