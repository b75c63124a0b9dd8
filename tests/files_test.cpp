// Files that fail a run: a disk that fills up, a folder in place of a file, a recording that is no recording.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/enginetest.h"
#include "tests/support/receivertest.h"
#include "tests/support/scriptedline.h"
#include "tests/support/smalldisk.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class FilesTest : public EngineTest {
 protected:
  FilesTest() { fs::create_directories(folder); }
  ~FilesTest() override {
    engine.Stop();
    fs::remove_all(folder);
  }
  std::string Path(const char* name) const { return (folder / name).string(); }
  void Write(const char* name, const std::string& text) {
    std::ofstream(Path(name), std::ios::binary) << text;
  }
  std::string Read(const char* name) {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void RecordTo(const std::string& path) {
    engine.m_strRecordFile = CString::FromUtf8(path);
    engine.m_bRecordRaw = true;
  }

  const fs::path folder = fs::temp_directory_path() / ("gpsengine-files-" + std::to_string(getpid()));
};

TEST_F(FilesTest, KeepTheBytesThatADiskHadRoomForWhileTheRunGoesOn) {
  Script line(kPort);
  RecordTo(Path("drive.log"));
  ASSERT_TRUE(engine.Start());
  std::string sent;
  {
    const SmallDisk disk(1000);
    for (int i = 0; i < 30; ++i) {
      sent += FixAt(i);
      line.Send(FixAt(i));
      ASSERT_TRUE(UntilRecords(static_cast<std::size_t>(i) + 1));
    }
  }
  EXPECT_EQ(Read("drive.log"), sent.substr(0, 1000));
  EXPECT_FALSE(engine.m_bRecordRaw);
  EXPECT_TRUE(boxes.empty());
}

TEST_F(FilesTest, ThatCannotBeRecordedToAreNamedOnceAndTheRunGoesOn) {
  Script line(kPort);
  const std::vector<std::string> cannotOpen = {"Could not open file to log raw data!"};
  const struct {
    std::string path;
    std::vector<std::string> boxes;
  } rows[] = {{folder.string(), cannotOpen}, {"/dev/full", {}}, {"", cannotOpen}};
  SetMessageBoxHandler([this](const CString& text, BoxKind) {
    boxes.push_back(text.ToUtf8());
    EXPECT_TRUE(engine.m_bRecordRaw) << "until the user has seen it";
  });
  ASSERT_TRUE(engine.Start());
  std::size_t count = 0;
  for (const auto& row : rows) {
    boxes.clear();
    RecordTo(row.path);
    line.Send(FixAt(1));
    ASSERT_TRUE(UntilRecords(++count)) << row.path;
    EXPECT_FALSE(engine.m_bRecordRaw) << row.path;
    line.Send(FixAt(2));
    ASSERT_TRUE(UntilRecords(++count)) << row.path;
    EXPECT_EQ(boxes, row.boxes) << row.path;
  }
}

TEST_F(FilesTest, WhoseFolderVanishesAreMissedAtTheNextStart) {
  Script line(kPort);
  RecordTo(Path("drive.log"));
  ASSERT_TRUE(engine.Start());
  line.Send(FixAt(1));
  ASSERT_TRUE(UntilRecords(1));
  fs::remove_all(folder);
  line.Send(FixAt(2));
  ASSERT_TRUE(UntilRecords(2));
  EXPECT_TRUE(boxes.empty()) << "the open file takes bytes as before";
  ASSERT_TRUE(engine.Start());
  line.Send(FixAt(3));
  ASSERT_TRUE(UntilRecords(3));
  EXPECT_FALSE(engine.m_bRecordRaw);
  EXPECT_EQ(boxes.size(), 1u);
}

/// Plays files faster than a line every half second: their first line is a pause, whose box gives the thread
/// its clock.
class PlayedFilesTest : public FilesTest {
 protected:
  static constexpr char kPause[] = "QRV PAUSE,now\n";

  void Play(
      const std::string& content, std::function<void()> atPause = [] {}) {
    Write("played.log", kPause + content);
    SetMessageBoxHandler([atPause](const CString&, BoxKind) {
      static TestClock clock;
      SetClock(&clock);
      atPause();
    });
    engine.m_bEmulation = true;
    engine.m_strEmulationFile = CString::FromUtf8(Path("played.log"));
    ASSERT_TRUE(engine.Start());
  }
};

TEST_F(PlayedFilesTest, OfAnyBytesAreNoise) {
  std::string binary;
  for (int i = 0; i < 20000; ++i) binary += static_cast<char>(i * i >> 3);
  Play(binary + "\n\n\r\n" + "\0\0$\n"s + FixAt(1));
  EXPECT_TRUE(UntilRecords(1));
}

TEST_F(PlayedFilesTest, OfALineOfMegabytesGoOnBehindIt) {
  Play(std::string(5 << 20, '$') + "\n" + FixAt(1) + FixAt(2));
  EXPECT_TRUE(UntilRecords(1));
  EXPECT_GT(engine.GetDroppedBuffers(), 0);
}

TEST_F(PlayedFilesTest, ThatChangeArePlayedAsTheyAreAtTheMoment) {
  int pauses = 0;
  Play(FixAt(1), [this, &pauses] {
    if (++pauses == 2) Write("played.log", kPause + FixAt(2));
    if (pauses == 4) Write("played.log", "");
  });
  EXPECT_TRUE(
      Until([this] { return !window.records.empty() && window.records.back().m_dTimeOfDay == 12.0; }));
  // Emptied, it has no line to go on with: the run stays, with nothing to play.
  Sleep(50);
  EXPECT_TRUE(engine.IsActive());
  engine.Stop();
  EXPECT_EQ(pauses, 4);
}

}  // namespace
