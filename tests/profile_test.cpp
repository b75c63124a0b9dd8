#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "gpsengine/drivers/sirf.h"
#include "gpsengine/platform/application.h"
#include "tests/support/smalldisk.h"

namespace {

namespace fs = std::filesystem;

class ProfileTest : public testing::Test {
 protected:
  ProfileTest() { app.SetProfilePath(CString::FromUtf8(path.string())); }
  ~ProfileTest() override { fs::remove_all(folder); }

  void Write(const std::string& text) {
    fs::create_directories(folder);
    std::ofstream(path) << text;
  }
  std::string Text() {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const fs::path folder = fs::temp_directory_path() / ("gpsengine-profile-" + std::to_string(getpid()));
  const fs::path path = folder / "host.ini";
  CWinApp app{"gpsengine-test"};
};

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
  EXPECT_FALSE(fs::exists(path)) << "nothing was to be written";
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
  Write("[SiRF]\nBaud=fast\n[Half");
  EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 7), 7);
  EXPECT_EQ(app.GetProfileInt("SiRF", "Speed", 7), 7);
  Write("[SiRF]\nSpeed=1\n[Other]\nBaud=1\n");
  EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 7), 7) << "that is another section's";
  Write(std::string(100, '\0') + "\xFF\xFE[=\n==\n");
  EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 7), 7);
}

TEST_F(ProfileTest, KeepsWhatItHadIfTheDiskIsFull) {
  const std::string before = "[SiRF]\nBaud=4800\n" + std::string(3000, ';') + '\n';
  Write(before);
  {
    const SmallDisk disk(1000);
    EXPECT_FALSE(app.WriteProfileInt("SiRF", "Baud", 38400));
  }
  EXPECT_EQ(Text(), before);
  EXPECT_FALSE(fs::exists(path.string() + ".new"));
  EXPECT_TRUE(app.WriteProfileInt("SiRF", "Baud", 38400));
  EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 1), 38400);
}

TEST_F(ProfileTest, InPlaceOfWhichAFolderStandsOrNothingCanIsNone) {
  fs::create_directories(path);
  for (const CString& place : {CString::FromUtf8(path.string()), CString("/proc/nowhere/host.ini")}) {
    app.SetProfilePath(place);
    EXPECT_EQ(app.GetProfileInt("SiRF", "Baud", 7), 7);
    EXPECT_FALSE(app.WriteProfileInt("SiRF", "Baud", 1));
  }
  EXPECT_FALSE(fs::exists(path.string() + ".new"));
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
  EXPECT_FALSE(fs::exists(path));
  EXPECT_TRUE(receiver.SaveDifferentSettings(57600));
  EXPECT_EQ(Text(), "[SiRF]\nBaud=57600\n");
  EXPECT_EQ(rate(CSirf()), 57600);
  EXPECT_EQ(rate(CHolux()), 4800);
}

}  // namespace
