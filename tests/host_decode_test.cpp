#include <fcntl.h>

#include "gpsengine/face/blockguard.h"
#include "host/decode.h"
#include "host/run/recording.h"
#include "tests/support/receivertest.h"

using namespace host;

namespace {

/// A recording of four epochs: positions, a whole group, a broken sentence, noise and a text in a make's own
/// format.
std::string Stream() {
  std::string stream = "\x01\x02";
  for (int i = 0; i < 4; ++i) {
    stream += GgaAt("12351" + std::to_string(i)) + WithChecksum("$GPGSV,1,1,01,07,45,180,41");
    stream += WithChecksum("$PGRME,15.0,M,45.0,M,25.0,M");
  }
  return stream + "$GPGGA,1,2*00\r\n";
}

std::string Packed(const std::string& bytes) {
  const TemporaryFolder folder;
  WriteFile(folder / "plain", bytes);
  EXPECT_EQ(std::system(("gzip " + (folder / "plain")).c_str()), 0);
  return ReadFile(folder / "plain.gz");
}

class HostDecode : public testing::Test {
 protected:
  HostDecode() { options_.files = {folder_ / "decoded.log"}; }

  /// What Decode writes for a file of these bytes, without the moment of publication, which is never the
  /// same. A failure's text is part of it.
  std::string Decoded(const std::string& bytes, ExitCode code = ExitCode::done) {
    WriteFile(options_.files[0], bytes);
    const UniqueDescriptor shown(
        open((folder_ / "shown").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    Output output(shown.Get());
    ExitCode ended = ExitCode::done;
    const std::string error = ErrorOf([&] { ended = Decode(options_, interrupt_, output); });
    EXPECT_EQ(error == "none" ? static_cast<int>(ended) : std::stoi(error), static_cast<int>(code));
    if (error != "none") return error;
    std::string text = ReadFile(folder_ / "shown");
    for (std::size_t at; (at = text.find("\"m_Time\":")) != std::string::npos;)
      text.erase(at, text.find(',', at) - at + 1);
    return text;
  }

  CWinApp app_{"gpsengine-test"};
  Interrupt interrupt_;
  const TemporaryFolder folder_;
  DecodeOptions options_;
};

}  // namespace

TEST_F(HostDecode, EndsTheRecordFormatWithASummary) {
  options_.format = Format::record;
  const std::string text = Decoded(Stream());
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 13);
  EXPECT_EQ(
      text.substr(text.find("{\"summary\"")),
      R"({"summary":{"messages":13,"sentencesRecognised":9,"checksumErrors":1,"binaryMessages":0,)"
      R"("badBinaryMessages":0,"droppedBuffers":0,"published":{"WM_GPS_NEW_DATA":12,"WM_GPS_NEW_RAW_DATA":0,)"
      R"("WM_GPS_NEW_EPHEMERIS":0,"WM_GPS_NEW_BIN":0}}})"
      "\n");
}

TEST_F(HostDecode, ReadsAPackedRecordingAsWhatItHoldsFromAFileAndFromAPipe) {
  options_.format = Format::json;
  Decoded(Stream());  // for the library's working record, as above
  const std::string plain = Decoded(Stream());
  EXPECT_EQ(Decoded(Packed(Stream().substr(0, 100)) + Packed(Stream().substr(100))), plain);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string packed = Packed(Stream());
  ASSERT_EQ(write(ends[1], packed.data(), packed.size()), static_cast<ssize_t>(packed.size()));
  close(ends[1]);
  Recording recording("/dev/fd/" + std::to_string(ends[0]));
  EXPECT_EQ(recording.Next(10000), Stream());
  close(ends[0]);
  testing::internal::CaptureStderr();
  EXPECT_NE(Decoded(packed.substr(0, packed.size() - 9)), "");
  EXPECT_TRUE(Has(testing::internal::GetCapturedStderr(), "in the middle"));
}

TEST_F(HostDecode, BringsBlocksToTheLibraryWholeInAnyPieces) {
  const auto block = [](char number, std::size_t length) {
    return std::string("$BIN") + number + std::string(length - 7, '_') + "\r\n";
  };
  const std::string sentence = WithChecksum("$GPZDA,,,,,,"), oem = "\xAA\x44\x12 a_message\xAA\x44 ends";
  const std::string stream = sentence + "$BI" + block(95, 140) + block(96, 312) + sentence + block(80, 52) +
                             oem + block(95, 139) + "$BI$BIN" + block(96, 312).substr(4) + oem;
  const std::string whole = sentence + "$BI" + block(95, 140) + '\n' + block(96, 312) + '\n' + sentence +
                            block(80, 52) + oem + block(95, 139) + "$BI$BIN" + block(96, 312).substr(4) +
                            '\n' + oem;
  for (const std::size_t piece : {1u, 2u, 3u, 100u, 5000u}) {
    BlockGuard guard;
    std::string passed;
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      passed += guard.Pass(std::string_view(stream).substr(at, piece));
      EXPECT_FALSE(passed.ends_with("\xAA") || passed.ends_with("\xAA\x44")) << "a sync in two pieces";
    }
    EXPECT_EQ(passed, whole) << piece;
  }
}

TEST_F(HostDecode, SaysWhatARecordingHoldsOfWhichNothingIsUnderstood) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "it holds no bytes"},
      {"\xB5\x62\x01\x07 another language\r\n", "its bytes make no message"},
      {std::string("\xFF\xFE$\0G\0", 6), "byte order mark"},
      {WithChecksum("$GPRMC,,V,,,,,,,,,") + WithChecksum("$HEHDT,1.0,T") + WithChecksum("$PGRMX,00,1"),
       "no position (RMC, $HEHDT, $PGRMX)"},
      {"$HEHDT,1.0,T*2E\n", "no position ($HEHDT)"},
      {"$GPGGA,1,2*00\r\n", "checksum is wrong"},
      {std::string(65'536, 'x') + WithChecksum("$HEHDT,1.0,T"),
       "in its first 64 KB its bytes make no message"},
      {Packed(std::string("$BIN_\0\x80\0", 8) + std::string(130, 'x') + "\r\n"),
       "handed on undecoded ($BIN)"},
  };
  for (const auto& [bytes, text] : rows) {
    for (const Format format : {Format::text, Format::none}) {
      options_.format = format;
      EXPECT_TRUE(Has(Decoded(bytes, ExitCode::nothing_understood), text));
    }
  }
}
