#include "gpsengine/platform/cstring.h"

#include "gpsengine/platform/textscan.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"
#include "tests/support/basics.h"

namespace {

const CString kLong(u'x', 500);

TEST(CString, CopiesOfLongTextAreTextsOfTheirOwn) {
  const CString original = kLong;
  CString copy = original;
  copy.SetAt(0, u'y');
  EXPECT_EQ(original, kLong);
  EXPECT_EQ(copy, CString("y") + kLong.Mid(1));
  CString taken = std::move(copy);
  EXPECT_EQ(taken.GetLength(), 500);
  EXPECT_TRUE(copy.IsEmpty() && copy.GetString()[0] == 0);  // NOLINT(bugprone-use-after-move)
  taken.Empty();
  EXPECT_EQ(taken.GetString()[0], 0);
  taken += "short";
  for (int i = 0; i < 2; ++i) taken.Assign(kLong.View());
  EXPECT_EQ(taken, kLong);
  taken = "short";
  taken.SetAt(5, u'x');
  EXPECT_EQ(taken.GetString()[5], 0);
  EXPECT_EQ(taken, "short");
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
  CString tailed("0123");
  EXPECT_EQ(tailed.Append(tailed.GetString() + 2, 2), CString("012323"));
  EXPECT_EQ(tailed.Append(u"x", -1).Append(nullptr, 3), "012323");
  EXPECT_TRUE(CString(static_cast<const char*>(nullptr), 3).IsEmpty());
  for (const auto& [length, kept] : {std::pair(0, ""), {2, "ab"}, {-1, "abc"}}) {
    CString written("before");
    std::copy_n(u"abc", 4, written.GetBuffer(4));
    written.ReleaseBuffer(length);
    EXPECT_EQ(written, kept);
    EXPECT_EQ(written.GetString()[written.GetLength()], 0);
  }
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
  EXPECT_EQ((std::vector{text.Find(u','), text.Find(u',', 2), text.Find(u',', 99), text.Find(u',', -1),
                         text.Find(",,"), text.Find(",,", -1), text.Find(";"), text.FindOneOf("cb"),
                         text.FindOneOf("xyz")}),
            (std::vector{1, 3, -1, -1, 3, -1, -1, 2, -1}));
  EXPECT_TRUE(text.StartsWith("a,b") && !text.StartsWith("a,b,,c,"));
  EXPECT_EQ(text.Remove(u','), 3);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.Insert(1, "--"), 5);
  EXPECT_EQ(text, "a--bc");
  EXPECT_EQ(text.Replace("", "x"), 0);
  EXPECT_EQ(CString("a-a").Replace("a", "bc"), 2);
  CString head("bc");
  EXPECT_EQ(head.Insert(-1, "a"), 3);
  EXPECT_EQ(head, "abc");
  text.MakeUpper();
  EXPECT_EQ(text, "A--BC");
  EXPECT_EQ(text.CompareNoCase("a--bc"), 0);
  EXPECT_LT(text.CompareNoCase("a--bd"), 0);
  EXPECT_LT(text.CompareNoCase("a--bcd"), 0);
}

TEST(CString, WidensBytesWithoutASign) {
  const CString text("\xAA\x44\xFF", 3);
  EXPECT_EQ(text[0], 0xAA);
  EXPECT_EQ(text[2], 0xFF);
  std::string bytes;
  ASSERT_TRUE(text.ToBytes(bytes));
  EXPECT_EQ(bytes, "\xAA\x44\xFF");
  EXPECT_FALSE(CString(u"\u20AC").ToBytes(bytes));
  EXPECT_EQ(bytes, "");
}

TEST(CString, ConvertsUtf8BothWaysAndMarksWhatIsMalformed) {
  // The last two are the first and the last of two characters each.
  const std::string good =
      "\xF0\x9F\x9B\xB0 caf\xC3\xA9 \xE0\xA0\x80 \xE2\x82\xAC \xF0\x90\x80\x80 \xF4\x8F\xBF\xBF";
  EXPECT_EQ(CString::FromUtf8(good).ToUtf8(), good);
  EXPECT_EQ(CString::FromUtf8("\xF0\x9F\x9B\xB0").GetLength(), 2);
  for (const char* bad : {"\x80", "\x9F\x9B", "\xC0\xAF", "\xE2\x82", "\xED\xA0\x80", "\xF5\x80\x80\x80"})
    EXPECT_NE(CString::FromUtf8(bad).Find(u'\uFFFD'), -1) << bad;
  EXPECT_EQ(CString(u'\xD800').ToUtf8(), "\xEF\xBF\xBD");
  EXPECT_EQ(CString(u"\xDBFF\xE000").ToUtf8(), "\xEF\xBF\xBD\xEE\x80\x80");
  EXPECT_EQ(CString(u"\xDC00\xDC00").ToUtf8(), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CString, FormatsAsPrintfDoesWithTextsInUtf8) {
  CString text = "before";
  text.Format("%s|%5s|%-5s|%c|%%|%u|%02X|%104.0f", "\xC3\xA9", "b", "c", 'd', 7u, 8, 1557845.0);
  EXPECT_EQ(text, CString(u"\u00E9|    b|c    |d|%|7|08|") + CString(u' ', 97) + "1557845");
  text.Format("%s", "");
  EXPECT_EQ(text.GetLength(), 0);
}

// Texts of every length up to some registers, with what is looked for at every place and what stands outside
// of the text at its ends.
constexpr std::size_t kLongest = 70;

TEST(TextScan, FindsACharacterWhereverItStandsAndNoneBeyondTheEnd) {
  for (std::size_t length = 0; length < kLongest; ++length) {
    for (std::size_t place = 0; place <= length; ++place) {
      std::u16string text(kLongest, u'*');
      unsigned expected = 0;
      for (std::size_t i = 0; i < length; ++i) text[i] = i == place ? u'*' : static_cast<WCHAR>(0x1C0 + i);
      for (std::size_t i = 0; i < place; ++i) expected ^= text[i];
      const std::u16string_view view(text.data(), length);
      unsigned sum = 0;
      EXPECT_EQ(textscan::SumUpTo(view, u'*', sum), place < length ? static_cast<int>(place) : -1) << length;
      EXPECT_EQ(sum, expected) << length << ' ' << place;
      EXPECT_EQ(textscan::Contains(view, u'*'), place < length) << length << ' ' << place;
      const bool marked = place < length && place < textscan::kBlock;
      EXPECT_EQ(textscan::MatchBits(view, u'*', u'*'), marked ? std::uint64_t{1} << place : 0) << length;

      const std::string bytes(text.begin(), text.end());
      const char* const start = bytes.data();
      const char* const found = place < length ? start + place : nullptr;
      EXPECT_EQ(textscan::Find(start, start + length, '*'), found) << length << ' ' << place;
      EXPECT_EQ(textscan::FindAny(start, start + length, '-', '*', '-'), found) << length << ' ' << place;
    }
  }
}

TEST(TextScan, WidensWithoutASignAndTellsWhereAZeroStands) {
  for (int length = 0; length < static_cast<int>(kLongest); ++length) {
    for (int zero = 0; zero <= length; ++zero) {
      std::string bytes(kLongest, '\xE9');
      bytes[static_cast<std::size_t>(zero)] = '\0';
      std::u16string wide(kLongest, u'x');
      EXPECT_EQ(textscan::WidenText(bytes.data(), length, wide.data()), zero) << length;
      for (int i = 0; i < length; ++i) ASSERT_EQ(wide[static_cast<std::size_t>(i)], i == zero ? 0 : 0xE9);
      EXPECT_EQ(wide[static_cast<std::size_t>(length)], u'x') << length;
    }
  }
}

// The short way of the parser against the one that reads anything, which the tests of the number readers
// hold.
TEST(TextScan, ReadsNumbersAsTheLongWayDoes) {
  const std::string numbers =
      "0|7|4737.18624|00923.99740|.5|5.|.|1.2.3|12a|1e3|-4.5|+1| 3.25|9.75 |0.30000000000001|999999999999999|"
      "9999999999999999|99999999999999.9|123456789.123456|0000000.1|12345678901234567|\xB2.5|1\xFF|1/2|1:2|"
      "42|065|9999|12345|-1|1x||/|:;<";
  for (const std::string& number : Split(numbers, '|')) {
    for (const char* ahead : {"$GPGGA*080002.00 of a fix,", "$GPVTG,", ","}) {
      const CString field(number.c_str());
      double expected = -1.0;
      int left = 0;
      const bool good = ParseDouble(field, expected, left);
      CParser parser(ahead + field + ",N*5D", ",", false);
      parser.SkipField();
      double value = -1.0;
      EXPECT_EQ(parser.GetDouble(value), good) << ahead << number;
      EXPECT_EQ(value, good ? expected : -1.0) << ahead << number;
      int whole = -1, expected_whole = -1;
      parser.SetString(ahead + field + ",N*5D");
      parser.SkipField();
      EXPECT_EQ(parser.GetInt(whole), ParseInt(field, &expected_whole)) << ahead << number;
      EXPECT_EQ(whole, expected_whole) << ahead << number;
    }
  }
}

}  // namespace
