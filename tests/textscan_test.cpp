#include "gpsengine/platform/textscan.h"

#include <gtest/gtest.h>

#include <string>

#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"

namespace {

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
      EXPECT_EQ(textscan::FindNear(start, start + length, '*'), found) << length << ' ' << place;
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
TEST(TextScan, ReadsDecimalsAsTheLongWayDoes) {
  for (const char* number : {"0",
                             "7",
                             "4737.18624",
                             "00923.99740",
                             ".5",
                             "5.",
                             ".",
                             "1.2.3",
                             "12a",
                             "1e3",
                             "-4.5",
                             "+1",
                             " 3.25",
                             "9.75 ",
                             "0.30000000000001",
                             "999999999999999",
                             "9999999999999999",
                             "99999999999999.9",
                             "123456789.123456",
                             "0000000.1",
                             "12345678901234567",
                             "\xB2.5",
                             "1\xFF",
                             "1/2",
                             "1:2"}) {
    for (const char* ahead : {"$GPGGA*080002.00 of a fix,", "$GPVTG,", ","}) {
      const CString field(number);
      double expected = -1.0;
      int left = 0;
      const bool good = ParseDouble(field, expected, left);
      CParser parser(ahead + field + ",N*5D", ",", false);
      parser.SkipField();
      double value = -1.0;
      EXPECT_EQ(parser.GetDouble(value), good) << ahead << number;
      EXPECT_EQ(value, good ? expected : -1.0) << ahead << number;
    }
  }
}

}  // namespace
