// Files that fail a run: a disk that fills up, a folder in place of a file, a recording that is no recording.
#include <sys/stat.h>

#include "gpsengine/drivers/sirf.h"
#include "tests/support/enginetest.h"
#include "tests/support/scriptedline.h"

namespace {

using namespace std::string_literals;

class FilesTest : public EngineTest {
 protected:
  ~FilesTest() override { engine.Stop(); }
  void RecordTo(const std::string& path) {
    engine.m_strRecordFile = CString::FromUtf8(path);
    engine.m_bRecordRaw = true;
  }

  const TemporaryFolder folder;
};

TEST_F(FilesTest, KeepTheBytesThatADiskHadRoomForWhileTheRunGoesOn) {
  Script line(kPort);
  RecordTo(folder / "drive.log");
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
  EXPECT_EQ(ReadFile(folder / "drive.log"), sent.substr(0, 1000));
  EXPECT_FALSE(engine.m_bRecordRaw);
  EXPECT_TRUE(boxes.empty());
}

TEST_F(FilesTest, ThatCannotBeRecordedToAreNamedOnceAndTheRunGoesOn) {
  Script line(kPort);
  const std::vector<std::string> cannotOpen = {"Could not open file to log raw data!"};
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {folder / "", cannotOpen}, {"/dev/full", {}}, {"", cannotOpen}};
  SetMessageBoxHandler([this](const CString& text, BoxKind) {
    boxes.push_back(text.ToUtf8());
    EXPECT_TRUE(engine.m_bRecordRaw) << "until the user has seen it";
  });
  ASSERT_TRUE(engine.Start());
  std::size_t count = 0;
  for (const auto& [path, shown] : rows) {
    boxes.clear();
    RecordTo(path);
    line.Send(FixAt(1));
    ASSERT_TRUE(UntilRecords(++count)) << path;
    EXPECT_FALSE(engine.m_bRecordRaw) << path;
    line.Send(FixAt(2));
    ASSERT_TRUE(UntilRecords(++count)) << path;
    EXPECT_EQ(boxes, shown) << path;
  }
}

TEST_F(FilesTest, ThatCannotBePlayedAreNamedAndTheRunStops) {
  Script line(kPort);
  CGPSReceiver& receiver = *engine.GetReceiver();
  SetMessageBoxHandler([&](const CString& text, BoxKind) {
    boxes.push_back(text.ToUtf8());
    EXPECT_TRUE(receiver.Initialize());
  });
  engine.m_bEmulation = true;
  engine.m_strEmulationFile = engine.m_strEmulationDir = CString::FromUtf8(folder / "");  // no recording
  ASSERT_TRUE(engine.Start());
  EXPECT_TRUE(Until([&] { return !engine.IsActive() && receiver.GetPortHandle() == INVALID_HANDLE_VALUE; }))
      << "a port that was opened meanwhile is closed";
  engine.Stop();
  EXPECT_EQ(boxes, std::vector<std::string>{"Unable to open the emulation file: '" + (folder / "") +
                                            "Emulation.log'."});
}

/// Plays files faster than a line every half second: their first line is a pause, whose box gives the thread
/// its clock.
class PlayedFilesTest : public FilesTest {
 protected:
  static inline TestClock s_clock;
  static constexpr char kPause[] = "QRV PAUSE,Turn the key, now\n";

  void Play(
      const std::string& content, std::function<void()> atPause = [] {}) {
    WriteFile(folder / "played.log", kPause + content);
    SetMessageBoxHandler([atPause](const CString& text, BoxKind) {
      EXPECT_TRUE(text == "Turn the key, now" || text == "$");
      SetClock(&s_clock);
      atPause();
    });
    engine.m_bEmulation = true;
    engine.m_strEmulationFile = CString::FromUtf8(folder / "played.log");
    ASSERT_TRUE(engine.Start());
  }
};

TEST_F(PlayedFilesTest, OfAnyBytesAndLinesOfMegabytesAreNoise) {
  std::string binary;
  for (int i = 0; i < 20000; ++i) binary += static_cast<char>(i * i >> 3);
  Play(binary + "\n\n\r\n" + "\0\0$\n"s + FixAt(1) + std::string(5 << 20, '$') + "\n" + FixAt(2) + FixAt(3) +
       "QRV PAUSE,$\n" + FixAt(4));
  EXPECT_TRUE(UntilRecords(5));
  for (const CGPSData& record : window.records) EXPECT_NE(record.m_dTimeOfDay, 14.0) << "after a dollar";
  EXPECT_GT(engine.GetDroppedBuffers(), 0);
}

TEST_F(PlayedFilesTest, ThatChangeArePlayedAsTheyAreAtTheMoment) {
  int pauses = 0;
  Play(FixAt(1), [this, &pauses] {
    if (++pauses == 2) WriteFile(folder / "played.log", kPause + FixAt(2));
    if (pauses == 4) WriteFile(folder / "played.log", "");
  });
  EXPECT_TRUE(
      Until([this] { return !window.records.empty() && window.records.back().m_dTimeOfDay == 12.0; }));
  // Emptied, it has no line to go on with: the run stays, with nothing to play.
  Sleep(50);
  EXPECT_TRUE(engine.IsActive());
  engine.Stop();
  EXPECT_EQ(pauses, 4);
  EXPECT_EQ(s_clock.msLongestWait.Get(), 500u) << "two lines a second";
}

class ProfileTest : public testing::Test {
 protected:
  ProfileTest() { app.SetProfilePath(CString::FromUtf8(path)); }
  void Write(const std::string& text) {
    std::filesystem::create_directories(folder / "new");
    WriteFile(folder / "new/host.ini", text);
  }
  std::string Text() { return ReadFile(folder / "new/host.ini"); }

  const TemporaryFolder folder;
  const std::string path = folder / "new/host.ini";
  CWinApp app{"gpsengine-test"};
};

TEST(Profile, LiesInTheUsersConfigurationFolder) {
  setenv("HOME", "/home/one", 1);
  unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(CWinApp("gps").GetProfilePath(), "/home/one/.config/gps/gps.ini");
  setenv("XDG_CONFIG_HOME", "", 1);
  EXPECT_EQ(CWinApp("gps").GetProfilePath(), "/home/one/.config/gps/gps.ini");
  setenv("XDG_CONFIG_HOME", "/settings", 1);
  EXPECT_EQ(CWinApp("gps").GetProfilePath(), "/settings/gps/gps.ini");
  unsetenv("XDG_CONFIG_HOME");
}

TEST_F(ProfileTest, KeepsNumbersAndWhatOthersWrote) {
  Write("; mine\n[Window]\nWidth=800\n\n[SiRF]\nBaud=4800\n");
  EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 1), 4800);
  EXPECT_TRUE(app.WriteProfileInt("SiRF", "Baud", 38400));
  EXPECT_TRUE(app.WriteProfileInt("Window", "Height", 600));
  EXPECT_TRUE(app.WriteProfileInt("CSI - MAX", "Baud", 19200));
  EXPECT_EQ(Text(),
            "; mine\n[Window]\nHeight=600\nWidth=800\n\n[SiRF]\nBaud=38400\n[CSI - MAX]\nBaud=19200\n");
}

TEST_F(ProfileTest, KeepsTextsAndForgetsThem) {
  EXPECT_TRUE(app.RemoveProfileEntry("Last", "Port"));
  EXPECT_FALSE(std::filesystem::exists(path)) << "nothing was to be written";
  Write("[Last]\nPort =  /dev/serial/by-id/usb-a = b  \n[Window]\nWidth=800\n");
  EXPECT_EQ(app.GetProfileString("Last", "Port").ToUtf8(), "/dev/serial/by-id/usb-a = b");
  EXPECT_EQ(app.GetProfileString("Last", "Model", "none").ToUtf8(), "none");
  EXPECT_TRUE(app.WriteProfileString("Last", "Port", CString::FromUtf8("/dev/\xC3\xA4")));
  EXPECT_EQ(app.GetProfileString("Last", "Port").ToUtf8(), "/dev/\xC3\xA4");
  EXPECT_FALSE(app.WriteProfileString("Last", "Model", "a\n[Window]"))
      << "it would be read as more than a text";
  EXPECT_TRUE(app.RemoveProfileEntry("Last", "Port"));
  EXPECT_EQ(Text(), "[Last]\n[Window]\nWidth=800\n");
}

TEST_F(ProfileTest, GivesTheDefaultForWhatItCannotRead) {
  EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 7), 7);
  for (const char* content :
       {"[SiRF]\nBaud=fast\n[Half", "[SiRF]\nSpeed=1\n[Other]\nBaud=1\n", "\x01\xFF\xFE[=\n==\n"}) {
    Write(content);
    EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 7), 7) << content;
  }
}

TEST_F(ProfileTest, KeepsWhatItHadIfTheDiskIsFull) {
  const std::string before = "[SiRF]\nBaud=4800\n" + std::string(700, ';') + '\n';
  Write(before);
  {
    const SmallDisk disk(500);
    EXPECT_FALSE(app.WriteProfileInt("SiRF", "Baud", 38400));
  }
  EXPECT_EQ(Text(), before);
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
  EXPECT_TRUE(app.WriteProfileInt("SiRF", "Baud", 38400));
  EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 1), 38400);
}

TEST_F(ProfileTest, InPlaceOfWhichAFolderStandsOrNothingCanIsNone) {
  std::filesystem::create_directories(path);
  const std::string socket = path + ".socket";  // which nobody can read, not even the superuser
  ASSERT_EQ(mknod(socket.c_str(), S_IFSOCK | 0600, 0), 0);
  for (const std::string& place : {path, socket, "/proc/nowhere/host.ini"s}) {
    app.SetProfilePath(CString::FromUtf8(place));
    EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 7), 7);
    EXPECT_FALSE(app.WriteProfileInt("SiRF", "Baud", 1));
  }
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

TEST_F(ProfileTest, HoldsTheBaudRateOfAModelUnderItsName) {
  const auto rate = [](CGPSReceiver&& receiver) {
    receiver.SetProperties();
    return receiver.GetCurrentBaudrate();
  };
  EXPECT_EQ(rate(CSirf()), 4800);
  CSirf receiver;
  receiver.SetProperties();
  EXPECT_FALSE(receiver.SaveDifferentSettings(4800));
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(receiver.SaveDifferentSettings(57600));
  EXPECT_EQ(Text(), "[SiRF]\nBaud=57600\n");
  EXPECT_EQ(rate(CSirf()), 57600);
  EXPECT_EQ(rate(CHolux()), 4800);
}

}  // namespace
