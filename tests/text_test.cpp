#include "gpsengine/platform/object.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"
#include "gpsengine/text/textfile.h"
#include "tests/support/basics.h"

namespace {

TEST(ParseInt, ReadsFromTheStartAndStopsAtWhatDoesNotFit) {
  std::istringstream good("12abc +7 -40 0 007 2147483646 -2147483647");
  for (std::string text; good >> text;) {
    int value = 12345;
    EXPECT_TRUE(ParseInt(CString((" \t " + text).c_str()), &value)) << text;
    EXPECT_EQ(value, std::strtol(text.c_str(), nullptr, 10));
  }
  int literal = 0;
  EXPECT_TRUE(ParseInt(u"12", &literal));
  EXPECT_EQ(literal, 12);
  for (const char* bad :
       {"2147483647", "-2147483648", "99999999999999999999999", "abc", "", "-", "- 4", ".5"}) {
    int value = 12345;
    EXPECT_FALSE(ParseInt(CString(bad), &value)) << bad;
    EXPECT_EQ(value, 12345) << bad;
  }
}

TEST(ParseDouble, ReadsDecimalsToTheLastBitAndCountsWhatIsLeft) {
  std::istringstream good(
      "1.5* 4807.038 -0.0133 +123.45 0 5. .5 1e3x 1e 1ex 1e-x 2E-2 9345.03431408 1.2.3 "
      "123456789012345678901234567890 0.1234567890123456789 1e-400 4.9e-324 1.7976931348623157e308 "
      "99999999999999999999.5 1e23 -0.0e9 0.00001e-500 0e999 1e-99999999999999999999 -12 1+1 1e+2 5e-1-");
  double value = 77.0;
  int left = -1;
  for (std::string text; good >> text;) {
    char* end = nullptr;
    const double expected = std::strtod(text.c_str(), &end);
    EXPECT_TRUE(ParseDouble(CString((" \t\r" + text).c_str()), value, left)) << text;
    EXPECT_EQ(value, expected) << text;
    EXPECT_EQ(left, static_cast<int>(std::strlen(end))) << text;
  }
  EXPECT_TRUE(ParseDouble(CString("0.") + CString(u'0', 400) + "1", value, left));
  EXPECT_EQ(value, 0.0) << "too small for any other";
  EXPECT_TRUE(ParseDouble("0x10", value, left));
  EXPECT_EQ(value + left, 3.0) << "which is not hexadecimal here";
}

TEST(ParseDouble, RefusesWhatIsNoNumberOrTooLarge) {
  for (const char* text : {"", "abc", "-", ".", "e5", "nan", "inf", "  ", "--1", "- 1", "+-1", ".e1"}) {
    double value = 77.0;
    int left = -1;
    EXPECT_FALSE(ParseDouble(CString(text), value, left)) << text;
    EXPECT_EQ(value, 0.0) << text;
    EXPECT_EQ(left, -1) << text;
  }
  for (const char* text : {"1e999", "0.00001e999999999999999999999", "1e309"}) {
    double value = 0.0;
    int left = -1;
    EXPECT_FALSE(ParseDouble("-" + CString(text), value, left));
    EXPECT_EQ(value, -HUGE_VAL) << text;
  }
}

TEST(Parser, SplitsAtAnyDelimiterAndKeepsEmptyFields) {
  const std::tuple<CString, CString, std::vector<CString>> rows[] = {
      {CString("a\0b", 3), ",", {CString("a\0b", 3)}},
      {"$PEM:05 SAV,,*7F", ": ,*", {"$PEM", "05", "SAV", "", "", "7F"}},
      {"$PEM:05 SAV,*", ": ,", {"$PEM", "05", "SAV", "*"}},
      {"a,", ",*", {"a", ""}},
      {"", ",*", {}},
      {"b", ",*", {"b"}},
      {"c*,d", ",*", {"c", "", "d"}}};
  for (const auto& [text, delimiters, fields] : rows) {
    CParser parser(text, delimiters, false), other(text, delimiters.ToUtf8().c_str(), false);
    std::vector<CString> found, others;
    for (CString field; parser.GetNextString(field);) found.push_back(field);
    for (CString field; other.GetNextString(field);) others.push_back(field);
    EXPECT_EQ(found, fields);
    EXPECT_EQ(others, fields) << "with delimiters of the other kind of text";
  }
  CString field;
  CParser parser("", ",", false);
  parser.SetString(CString(u'x', 200) + ",");  // more than a text keeps within itself
  EXPECT_TRUE(parser.GetNextString(field));
  EXPECT_EQ(field.GetLength(), 200);
  parser.SetString("");
  EXPECT_FALSE(parser.GetNextString(field)) << "nothing is left of the text before";
}

TEST(Parser, MovesOnByOneFieldGoodOrBad) {
  CParser parser("x,,7,1.5,9z", ",", false);
  int number = -1;
  double decimal = -1.0;
  EXPECT_FALSE(parser.GetInt(number) || parser.GetDouble(decimal));
  EXPECT_EQ(number + decimal, -2.0);
  EXPECT_TRUE(parser.GetInt(number) && parser.GetDouble(decimal));
  EXPECT_EQ(number + decimal, 8.5);
  EXPECT_TRUE(parser.GetInt(number));
  EXPECT_EQ(number, 9);
  EXPECT_FALSE(parser.GetInt(number));
  parser.SetString("y,8");
  EXPECT_TRUE(parser.SkipField());
  parser.SetString("x,8");
  parser.SetExceptionThrowing(true);
  EXPECT_THROW(parser.GetInt(number), CUserException);
  EXPECT_TRUE(parser.GetInt(number));
  EXPECT_EQ(number, 8);
  EXPECT_THROW(parser.SkipField(), CUserException);
}

class TextFileTest : public testing::Test {
 protected:
  std::vector<CString> Lines(const std::string& content) {
    CFile written;
    EXPECT_NE(written.Open(path.GetString(), CFile::modeCreate | CFile::modeWrite, nullptr), 0);
    EXPECT_TRUE(written.Write(content.data(), 1));
    EXPECT_TRUE(written.Write(content.data() + 1, static_cast<UINT>(content.size() - 1)));
    EXPECT_NE(file.Open(path.GetString(), CFile::typeText, nullptr), 0);
    std::vector<CString> lines;
    for (CString line; file.ReadString(line);) lines.push_back(line);
    return lines;
  }
  const TemporaryFolder folder;
  const CString path = CString::FromUtf8(folder / "text");
  CTextFile file;
};

TEST_F(TextFileTest, TakesEveryKindOfLineEndAndTheLastLineWithoutOne) {
  EXPECT_EQ(Lines("one\ntwo\r\n\n\r\nfive\xE9"), (std::vector<CString>{"one", "two", "", "", "five\xE9"}));
  file.SeekToBegin();
  CString line;
  EXPECT_TRUE(file.ReadString(line));
  file.SeekToBegin();
  EXPECT_TRUE(file.ReadString(line));
  EXPECT_EQ(line, "one");
  int rest = 0;
  errno = EINTR;  // of an earlier call
  while (file.ReadString(line)) ++rest;
  EXPECT_EQ(rest, 4);
  EXPECT_EQ(Lines("x"), std::vector<CString>{"x"}) << "another file, from its beginning";
}

TEST_F(TextFileTest, ReadsALineWholeWhateverItsLengthAndNoneOnceItIsClosed) {
  const auto lines = Lines(std::string(100000, 'x') + '\n' + std::string(3 << 20, 'y') + "\nlast");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].GetLength(), 100000);
  EXPECT_EQ(lines[1].GetLength(), 3 << 20);
  // With its end right behind a block of the file.
  EXPECT_EQ(Lines("a\n" + std::string(65534, 'x') + "\n")[1].GetLength(), 65534);
  file.SeekToBegin();
  CString line = "kept";
  file.Close();
  CFile other;  // with the descriptor that is free again
  EXPECT_NE(other.Open(path.GetString(), CFile::modeRead, nullptr), 0);
  EXPECT_FALSE(file.ReadString(line));
  EXPECT_EQ(other.Open(path.Left(path.GetLength() - 4).GetString(), CFile::modeRead), 0) << "a folder";
  EXPECT_EQ(line, "kept");
  const auto before = Entries("/proc/self/fd");
  for (int i = 0; i < 2; ++i) EXPECT_NE(other.Open(path.GetString(), CFile::modeRead), 0);
  EXPECT_NE(CFile().Open(path.GetString(), CFile::modeRead), 0);
  EXPECT_EQ(Entries("/proc/self/fd"), before + 1) << "what opens again or goes open is closed";
}

}  // namespace
