#include "gpsengine/sentences/fields.h"
#include "host/session/recordingfeed.h"
#include "tests/support/program.h"
#include "tests/support/receivertest.h"

using namespace host;

namespace {

class HostPlayer : public testing::Test {
 protected:
  HostPlayer() { app_.SetProfilePath(""); }

  void Record(const std::string& bytes) const { WriteFile(path_, bytes); }
  /// The recording on its way to a receiver, whose line has that baud rate.
  std::unique_ptr<PacedFeed> Play(double speed, int baud) {
    CGPSReceiver* const receiver = engine_.FindReceiver("Other");
    receiver->UseBaudrate(baud);
    receiver->SetupReceiver(1, 0, 0.0, "", true);
    engine_.SetReceiver(receiver);
    auto feed = std::make_unique<PacedFeed>(path_, speed);
    feed->Open(engine_, window_);
    return feed;
  }
  /// Plays what is due, and tells how many seconds later the next piece is.
  double Step(Feed& feed) {
    const auto before = feed.NextAt();
    feed.Step();
    return std::round(std::chrono::duration<double>(feed.NextAt() - before).count());
  }

  const TemporaryFolder folder_;
  const std::string path_ = folder_ / "played";
  CWinApp app_{"gpsengine-test"};
  host::HostWindow window_;
  CGPSEngine engine_;
};

}  // namespace

TEST_F(HostPlayer, WaitsAsLongAsTheRecordingDid) {
  Record(FixAt(0) + WithChecksum("$GPGLL,4807.038,N,01131.000,E,000010.5,A") + FixAt(0) + "noise\r\n" +
         FixAt(2));
  const auto feed = Play(0.01, 4800);
  EXPECT_EQ(Step(*feed), 50.0) << "at a hundredth of the speed";
  EXPECT_EQ(Step(*feed), 0.0) << "what is not due yet is not played";
  EXPECT_FALSE(feed->IsAtEnd());
  Record(WithChecksum("$GPGLL,4807.038,N,01131.000,E,060000,A") + FixAt(0) + FixAt(2));
  EXPECT_EQ(Step(*Play(0.01, 4800)), 200.0) << "a time that goes back begins again";
  Record(WithChecksum("$GPGLL,4807.038,N,01131.000,E,235959,A") + FixAt(0));
  EXPECT_EQ(Step(*Play(0.01, 4800)), 1100.0) << "over midnight";
}

TEST_F(HostPlayer, PacesARecordingWithoutTimesByItsLine) {
  Record(std::string(481, '.'));
  const auto slow = Play(1.0, 4810);
  EXPECT_NEAR(std::chrono::duration<double>(slow->NextAt() - Deadline::Clock::now()).count(), 1.0, 0.1);
  const auto quick = Play(PacedFeed::kMax, 4810);
  EXPECT_LE(quick->NextAt(), Deadline::Clock::now());
  quick->Step();
  EXPECT_TRUE(quick->IsAtEnd());
}

TEST_F(HostPlayer, TellsTheTimeOfDayOfGoodSentencesAlone) {
  EXPECT_EQ(TimeOfDayOf("noise" + WithChecksum("$GNRMC,010203.25,A,,,,,,,")), 3723.25);
  EXPECT_EQ(TimeOfDayOf(WithChecksum("$GPGLL,,,,,235959,V")), 86'399.0);
  for (const char* kind : {"$GPZDA", "$GNGNS"})
    EXPECT_EQ(TimeOfDayOf(WithChecksum(kind + std::string(",000102,4807.038,N"))), 62.0) << kind;
  for (const char* none : {"", "$", "$GPGGA,010203,,*00\r\n", "$GPGGA,010203"})
    EXPECT_FALSE(TimeOfDayOf(none));
  for (const char* none : {"$GPGGA,,,", "$GPGGA,990203,,", "$GPGGA,0:0203,,", "$GPGSV,010203,,"})
    EXPECT_FALSE(TimeOfDayOf(WithChecksum(none))) << none;
}

TEST_F(HostPlayer, ShowsWhatDecodeShowsAndEnds) {
  const std::string_view block("$BIN\x5F\x00\x04\x00\x11\x22\x33\x44\xAA\x00\r\n", 16);
  std::string stream = "\x01\x02$\r\n";
  for (int i = 0; i < 50; ++i) stream += FixAt(i) + WithChecksum("$GPGSV,1,1,01,07,45,180,41");
  Record(stream + std::string(block) + std::string(3000, 'x'));
  const std::string all = OutputOf("decode --format json " + path_);
  const std::string play = "monitor --play " + path_;
  EXPECT_EQ(OutputOf(play + " --format json --speed max"), all);
  const std::string some = OutputOf(play + " --format json --speed 1e5 --duration 9");
  EXPECT_TRUE(some.size() > all.size() / 6 && all.starts_with(some)) << some;
  OutputOf("serve --play " + path_ + " --speed max --tcp 0 --nmea " + path_ + ".nmea");
  EXPECT_EQ(OutputOf("decode --format text " + path_ + ".nmea"), OutputOf("decode --format text " + path_));
  EXPECT_EQ(OutputOf(play + " --format record --speed max --only bin"),
            R"({"message":"WM_GPS_NEW_BIN","block":"$BIN 95","bytes":16})"
            "\n");
  Program waiting({"monitor", "--play", path_, "--speed", "0.001"});
  EXPECT_TRUE(waiting.HasOutput(5000));
  waiting.Signal(SIGINT);
  EXPECT_EQ(waiting.Wait(), 130);
}
