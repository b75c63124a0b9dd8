// What stands in a file may be anything: the user's table of quality indicators, a recording to be played, a
// profile.
#include <sstream>

#include "fuzz/support.h"
#include "gpsengine/drivers/plain.h"
#include "gpsengine/text/parser.h"
#include "gpsengine/text/textfile.h"

namespace {

// A receiver that has read the table decodes fixes of every quality; the window looks at the kinds of fix.
void TryStatusTable(Rig& rig, std::string_view content) {
  WriteFile("GPSStatus", content);
  COtherGps receiver;
  receiver.LoadAlternatGPSStatusStrings();
  for (int quality = -1; quality < 12; ++quality) {
    CString fix;
    fix.Format("$GPGGA,123519,4807.038,N,01131.000,E,%d,08,0.9,545.4,M,46.9,M,,", quality);
    receiver.Parse(fix, GPS_STRING_GGA);
  }
  rig.window.Drain();
}

// The recording as often as it takes to pass the bounds of the file's own buffer.
void TryRecording(Rig& rig, std::string_view content, unsigned nTimes) {
  std::string whole;
  for (unsigned i = 0; i <= nTimes; ++i) whole += content;
  const std::string path = WriteFile("Emulation.log", whole);
  rig.StartOver(0, 0);
  CTextFile file;
  Require(file.Open(CString::FromUtf8(path).GetString(), CFile::typeText, nullptr) != 0, "the file opens");
  std::istringstream lines(whole);
  CString line;
  for (std::string expected; std::getline(lines, expected);) {
    if (expected.ends_with('\r')) expected.pop_back();
    Require(file.ReadString(line), "the file has this line");
    Require(line == TextOf(expected), "the line is as it stands in the file");
    CParser(line, ",*", false).SkipField();
    CBinBuffer bytes(line + "\r\n");
    rig.engine.UpdateGPSBuffer(bytes);
    rig.window.Drain();
  }
  Require(!file.ReadString(line), "the file has no more lines");
  file.SeekToBegin();
  Require(file.ReadString(line) == !whole.empty(), "the file begins again");
}

void TryProfile(Rig& rig, std::string_view content, int nValue) {
  const std::string path = WriteFile("profile.ini", content);
  rig.app.SetProfilePath(CString::FromUtf8(path));
  for (const char* section : {"SiRF", "Window", "CSI - MAX"}) {
    rig.app.GetProfileInt(section, "Baud", 1);
    Require(rig.app.WriteProfileInt(section, "Baud", nValue), "the profile is written");
    Require(rig.app.GetProfileInt(section, "Baud", nValue + 1) == nValue, "the profile keeps a number");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Input input(pData, nSize);
  Rig& rig = Rig::Instance();
  const unsigned choice = input.Byte();
  const unsigned kind = choice % 3;
  if (kind == 0) TryStatusTable(rig, input.Rest());
  if (kind == 1) TryRecording(rig, input.Rest(), choice < 240 ? 0 : choice);
  if (kind == 2) TryProfile(rig, input.Rest(), static_cast<int>(choice) * 1000);
  return 0;
}
