#include "gpsengine/platform/cstring.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

const CString kLong(u'x', 500);

TEST(CString, CopiesOfLongTextShareUntilOneChanges) {
  const CString original = kLong;
  CString copy = original;
  EXPECT_EQ(copy.GetString(), original.GetString());
  copy.SetAt(0, u'y');
  EXPECT_EQ(original, kLong);
  EXPECT_EQ(copy, CString("y") + kLong.Mid(1));
  CString taken = std::move(copy);
  EXPECT_EQ(taken.GetLength(), 500);
  EXPECT_TRUE(copy.IsEmpty());  // NOLINT(bugprone-use-after-move)
}

TEST(CString, GrowsAcrossItsOwnRoom) {
  CString text;
  for (int i = 0; i < 1000; ++i) text += static_cast<WCHAR>(u'a' + i % 26);
  ASSERT_EQ(text.GetLength(), 1000);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(text[i], u'a' + i % 26);
  CString doubled("0123456789");
  for (int i = 0; i < 6; ++i) doubled += doubled;
  EXPECT_EQ(doubled.GetLength(), 640);
  EXPECT_EQ(doubled.Right(10), CString("0123456789"));
}

TEST(CString, CutsIndexAndCountToWhatIsThere) {
  const CString text("sentence");
  const std::pair<CString, const char*> parts[] = {
      {text.Left(4), "sent"}, {text.Left(99), "sentence"},  {text.Left(-1), ""},
      {text.Right(3), "nce"}, {text.Right(99), "sentence"}, {text.Mid(5), "nce"},
      {text.Mid(3, 2), "te"}, {text.Mid(99, 2), ""},        {text.Mid(-3, 2), "se"}};
  for (const auto& [part, expected] : parts) EXPECT_EQ(part, expected);
  EXPECT_EQ(text.GetAt(8) + text.GetAt(-1), 0);
}

TEST(CString, FindsAndEdits) {
  CString text("a,b,,c");
  EXPECT_EQ(text.Find(u','), 1);
  EXPECT_EQ(text.Find(u',', 2), 3);
  EXPECT_EQ(text.Find(u',', 99), -1);
  EXPECT_EQ(text.Find(",,"), 3);
  EXPECT_EQ(text.Find("z"), -1);
  EXPECT_EQ(text.FindOneOf("cb"), 2);
  EXPECT_EQ(text.FindOneOf("xyz"), -1);
  EXPECT_TRUE(text.StartsWith("a,b"));
  EXPECT_FALSE(text.StartsWith("a,b,,c,"));
  EXPECT_EQ(text.Remove(u','), 3);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.Insert(1, "--"), 5);
  EXPECT_EQ(text, "a--bc");
  text.MakeUpper();
  EXPECT_EQ(text, "A--BC");
  EXPECT_EQ(text.CompareNoCase("a--bc"), 0);
  EXPECT_LT(text.CompareNoCase("a--bd"), 0);
  EXPECT_LT(text.CompareNoCase("a--bcd"), 0);
}

TEST(CString, ReplacesInOnePassFromTheLeft) {
  CString text("a   b    c");  // three blanks become two, four become two
  EXPECT_EQ(text.Replace("  ", " "), 3);
  EXPECT_EQ(text, "a  b  c");
  EXPECT_EQ(text.Replace("", "x"), 0);
}

TEST(CString, WidensBytesWithoutASign) {
  const CString text("\xAA\x44\xFF", 3);
  EXPECT_EQ(text[0], 0xAA);
  EXPECT_EQ(text[2], 0xFF);
  std::string bytes;
  ASSERT_TRUE(text.ToBytes(bytes));
  EXPECT_EQ(bytes, "\xAA\x44\xFF");
  bytes = "kept";
  EXPECT_FALSE(CString(u"\u20AC").ToBytes(bytes));
  EXPECT_EQ(bytes, "kept");
}

TEST(CString, ConvertsUtf8BothWaysAndMarksWhatIsMalformed) {
  const std::string good = "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x9B\xB0";
  EXPECT_EQ(CString::FromUtf8(good).ToUtf8(), good);
  EXPECT_EQ(CString::FromUtf8("\xF0\x9F\x9B\xB0").GetLength(), 2);
  for (const char* bad : {"\x80", "\xC0\xAF", "\xE2\x82", "\xED\xA0\x80", "\xF5\x80\x80\x80"})
    EXPECT_NE(CString::FromUtf8(bad).Find(u'\uFFFD'), -1) << bad;
  EXPECT_EQ(CString(u'\xD800').ToUtf8(), "\xEF\xBF\xBD");
}

TEST(CString, FormatsWhatTheCommandsNeed) {
  CString text;
  text.Format("$PASHS,RCI,%-f\r\n", 0.25);
  EXPECT_EQ(text, "$PASHS,RCI,0.250000\r\n");
  text.Format("$PSRF103,%02d,00,%02d,01*%02X", 4, 0, 0x20);
  EXPECT_EQ(text, "$PSRF103,04,00,00,01*20");
  text.Format("ASSIGNOMNI USER %.0f %d", 1557845.0, 1200);
  EXPECT_EQ(text, "ASSIGNOMNI USER 1557845 1200");
  text.Format("%s|%5s|%-5s|%c|%%|%u|%-d|%0d", CString("a"), "b", "c", 'd', 7u, -8, 9);
  EXPECT_EQ(text, "a|    b|c    |d|%|7|-8|9");
  text.Format("%X", -1);
  EXPECT_EQ(text, "FFFFFFFF");
}

TEST(CString, ChecksFormatsWhenTheyAreCompiled) {
  using textformat::Fits;
  using textformat::Kind;
  constexpr Kind kinds[] = {Kind::integer, Kind::text};
  EXPECT_TRUE(Fits("%d of %s", kinds));
  EXPECT_FALSE(Fits("%d", kinds));
  EXPECT_FALSE(Fits("%d %d", kinds));
  EXPECT_FALSE(Fits("%d %s %s", kinds));
  EXPECT_FALSE(Fits("%d %s %", kinds));
}

TEST(CString, SurvivesARuntimeFormatThatDoesNotFit) {
  CString text;
  text.Format(CString("%s, %d, %d"), 5, CString("x"));
  EXPECT_EQ(text, "5, x, ");
}

}  // namespace
