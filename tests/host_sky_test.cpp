#include "gpsengine/face/skysource.h"
#include "gpsengine/face/words.h"
#include "gpsengine/sentences/positiontail.h"
#include "gpsengine/sentences/skyreader.h"
#include "tests/support/receivertest.h"

using namespace gps;

namespace {

/// A satellite a word: its name, its number for all systems, "*" if it is used, elevation, azimuth and
/// signal.
std::string Show(const Sky& sky) {
  const auto text = [](const std::optional<int>& value) { return value ? std::to_string(*value) : "-"; };
  std::string words;
  for (const Satellite& one : sky.satellites) {
    words += (words.empty() ? "" : " ") + one.id.Name() + '=' + std::to_string(one.id.Prn()) +
             (one.used ? "*" : "") + ':' + text(one.elevation) + '/' + text(one.azimuth) + '/' +
             text(one.signal);
  }
  return words;
}

/// What is told of sentences without checksums, one sky a line, the last one at the end of them.
std::string SkiesOf(std::initializer_list<std::string> sentences) {
  SkyReader reader;
  std::string lines;
  for (const std::string& sentence : sentences) {
    if (reader.Read(Fields(sentence.ends_with('\n') ? sentence : WithChecksum(sentence))))
      lines += Show(reader.Latest()) + '\n';
  }
  return reader.Finish() ? lines + Show(reader.Latest()) + '\n' : lines;
}

/// A whole group of so many satellites in view, from 1 on, four a sentence.
std::string PagesOf(const std::string& talker, int satellites, const std::string& band = "") {
  std::string text;
  for (int last = 4; last <= satellites; last += 4) {
    std::string gsv = "$" + talker;
    gsv += Print("GSV,%d,%d,%d", satellites / 4, last / 4, satellites);
    for (int i = last - 3; i <= last; ++i) gsv += ',' + std::to_string(i) + ",10,20,30";
    text += WithChecksum(gsv + band);
  }
  return text;
}

void ReadAll(SkyReader& reader, const std::string& text) {
  for (const std::string& line : Split(text, '\n')) reader.Read(Fields(line));
}

/// The first satellites of ranges of numbers that follow each other, up to a last number: "G01=1 S20=33".
std::string RangesOf(Gnss said, int last) {
  std::string ranges;
  SatelliteId before{Gnss::unknown, -1};
  for (int number = 1; number <= last; ++number) {
    const SatelliteId id = SatelliteOf(number, said);
    if (id.system != before.system || id.number != before.number + 1)
      ranges += (ranges.empty() ? "" : " ") + id.Name() + '=' + std::to_string(number);
    before = id;
  }
  return ranges;
}

}  // namespace

TEST(HostSky, ReadsSentencesWithAGoodChecksumAndUpToFortyFields) {
  for (const char* line :
       {"$GPGGA,1", "$00,0,0", "$*00", "$GPGGA,1*", "$GPGGA,1*00", "GPGGA,1*4B", "$GPGGA,:*3G"})
    EXPECT_FALSE(Fields(line)) << line;
  for (const char* line : {"noise$GPG$GPGGA,1*4B", "$GPG$GPGGA,1*4B", "$GPGGA,1*4B\r\n$GPG", "$$GPGGA,1*4B"})
    EXPECT_EQ(Fields(line)[1], "1") << line;
  EXPECT_TRUE(Fields(WithChecksum("$GPTXT" + std::string(39, ','))));
  EXPECT_FALSE(Fields(WithChecksum("$GPTXT" + std::string(40, ','))));
}

TEST(HostSky, TellsASystemByTheRangeOfANumber) {
  EXPECT_EQ(
      RangesOf(Gnss::unknown, 1000),
      "G01=1 S20=33 R01=65 100=100 S20=120 159=159 I01=173 183=183 J01=193 C01=201 265=265 E01=301 337=337 "
      "C01=401 465=465 N01=901 919=919");
  const std::pair<const char*, const char*> rows[] = {{"GL", "R01=1 S20=33 R01=65"},
                                                      {"GA", "E01=1 S24=37 R01=65"},
                                                      {"GB", "C01=1 R01=65"},
                                                      {"BD", "C01=1 R01=65"},
                                                      {"QZ", "J01=1 G11=11 S20=33 R01=65"},
                                                      {"GI", "N01=1 G19=19 S20=33 R01=65"},
                                                      {"GN", "G01=1 S20=33 R01=65"}};
  for (const auto& [talker, ranges] : rows) EXPECT_EQ(RangesOf(SystemOfTalker(talker), 99), ranges) << talker;
  EXPECT_TRUE(RangesOf(Gnss::qzss, 204).ends_with(" J01=193 C03=203"));
  std::string systems;
  for (int id = 0; id <= 7; ++id) {
    const Constellation* const constellation = FindConstellation(SystemOfId(id));
    systems +=
        constellation != nullptr ? std::string(constellation->name) + constellation->letter + ' ' : "- ";
  }
  EXPECT_EQ(systems, "- GPSG GLONASSR GalileoE BeiDouC QZSSJ NavICN - ");
}

TEST(HostSky, NumbersTheSatellitesOfEverySystem) {
  // As read, shown, and written in a sentence of its system.
  const std::tuple<const char*, int, const char*, int> cases[] = {
      {"GP", 5, "G05=5", 5},      {"GP", 64, "S51=64", 64},  {"GP", 152, "S52=152", 152},
      {"GL", 2, "R02=66", 66},    {"GA", 33, "E33=333", 33}, {"GN", 205, "C05=405", 5},
      {"QZ", 202, "J10=202", 10}, {"GI", 7, "N07=507", 7},   {"GN", 173, "I01=173", 173}};
  for (const auto& [talker, number, id, written] : cases) {
    SkyReader reader;
    reader.Read(Fields(WithChecksum(Print("$%sGSV,1,1,01,%d,45,120,41,1", talker, number))));
    ASSERT_TRUE(reader.Finish());
    EXPECT_EQ(Show(reader.Latest()), std::string(id) + ":45/120/41") << talker << number;
    EXPECT_EQ(reader.Latest().satellites[0].id.SentenceNumber(), written) << talker << number;
  }
}

TEST(HostSky, JoinsTheBandsAndSystemsOfAnEpoch) {
  EXPECT_EQ(SkiesOf({GgaAt("120000"), "$GNGSA,A,3,07,,,,,,,,,,,,2.5,1.3,2.1,1",
                     "$GNGSA,A,3,33,,,,,,,,,,,,2.5,1.3,2.1,3", "$GPGSV,1,1,02,07,45,120,30,33,,,00,1",
                     "$GPGSV,1,1,01,07,45,120,35,8", "$GAGSV,1,1,02,33,05,010,,08,-3,,,7",
                     "$GBGSV,1,1,01,07,10,020,22", "$GBGSV,1,1,01,07,,,25"}),
            "G07=7*:45/120/35 S20=33:-/-/- E08=308:-3/-/- E33=333*:5/10/- C07=407:10/20/25\n");
  EXPECT_EQ(SkiesOf({"$GNGSA,A,3,07,08,,,,,,,,,,,2.5,1.3,2.1", "$GNGSA,A,3,66,,,,,,,,,,,,2.5,1.3,2.1",
                     "$GPGSV,1,1,02,07,45,120,30,09,01,02,03", "$GLGSV,1,1,01,66,45,120,31"}),
            "G07=7*:45/120/30 G09=9:1/2/3 R02=66*:45/120/31\n")
      << "used satellites without a system id, by the range of their numbers";
  EXPECT_EQ(SkiesOf({"$GPGSA,A,3,07,,,,,,,,,,,,2.5,1.3,2.1", "$GPGSV,1,1,01,07,45,120,30",
                     "$GLGSA,A,3,02,,,,,,,,,,,,2.5,1.3,2.1", "$GLGSV,1,1,01,02,45,120,31"}),
            "G07=7*:45/120/30 R02=66*:45/120/31\n");
}

TEST(HostSky, TellsOneSkyAnEpochAndForgetsWhatIsGone) {
  const std::string gps = "$GPGSV,1,1,01,07,45,120,30", glonass = "$GLGSV,1,1,01,66,45,120,31";
  const std::string both = "G07=7:45/120/30 R02=66:45/120/31\n", one = "G07=7:45/120/30\n";
  EXPECT_EQ(SkiesOf({GgaAt("120000"), gps, glonass, GgaAt("120001"), gps, glonass, GgaAt("120002")}),
            both + both);
  EXPECT_EQ(SkiesOf({GgaAt("120000"), gps, "$GPVTG,,T,,M,,N,,K", GgaAt("120000"), glonass, GgaAt("120001")}),
            both);
  EXPECT_EQ(SkiesOf({gps, glonass, gps, glonass, gps, glonass}), both + both + both) << "without any time";
  EXPECT_EQ(SkiesOf({gps, gps + ",1"}), one) << "of two bands, one of them unnamed";
  EXPECT_EQ(SkiesOf({GgaAt("120000"), gps, GgaAt("120001"), "$GPGSV,1,1,00", GgaAt("120002")}), one + "\n");
  EXPECT_EQ(SkiesOf({GgaAt("120000"), gps, glonass, GgaAt("120001"), gps, GgaAt("120002"), gps,
                     GgaAt("120003"), gps}),
            both + both + both + one);
  SkyReader other;
  ReadAll(other,
          WithChecksum("$GNGNS,120000,4807.038,N,01131.000,E,RR,13,0.9,25.63,-11.24,,") + WithChecksum(gps));
  EXPECT_TRUE(other.Finish() && other.Latest().used == 13 && other.Latest().hdop == 0.9);
  SkyReader reader;
  ReadAll(reader,
          GgaAt("120000") + WithChecksum(gps) + WithChecksum(glonass) + GgaAt("120001") + WithChecksum(gps));
  EXPECT_TRUE(reader.Read(Fields(WithChecksum(glonass)))) << "nothing more is waited for";
  EXPECT_EQ(reader.Latest().time_of_day, 43201.0);
  for (int i = 2; i < 9; ++i)
    ReadAll(reader, GgaAt(std::to_string(120000 + i)) + WithChecksum("$GPGSA,A,3,07,,,,,,,,,,,,2.5,1.3,2.1") +
                        WithChecksum(gps));
  EXPECT_EQ(Show(reader.Latest()), "G07=7*:45/120/30") << "what goes on coming stays";
  EXPECT_EQ(Print("%g %g %g", *reader.Latest().pdop, *reader.Latest().hdop, *reader.Latest().vdop),
            "2.5 1.3 2.1");
}

TEST(HostSky, KeepsWhatItHasWhenAGroupIsBroken) {
  const std::string good = "$GPGSV,1,1,01,07,45,120,30", sky = "G07=7:45/120/30\n";
  const std::initializer_list<const char*> cases[] = {
      {"$GPGSV,2,1,05,01,10,020,30,02,10,020,30,03,10,020,30,04,10,020,30"},
      {"$GPGSV,2,1,05,01,10,020,30", "$GPGSV,3,2,05,02,10,020,30", "$GPGSV,2,2,05,02,10,020,30"},
      {"$GPGSV,2,2,05,01,10,020,30"},
      {"$GPGSV,3,1,09,01,10,020,30", "$GPGSV,3,3,09,02,10,020,30"},
      {"$GPGSV,3,11,01,01,10,020,30"},
      {"$GPGSV,200,1,01,01,10,020,30"},
      {"$GPGSV,1,1,999,01,10,020,30"},
      {"$GPGSV,1,1,01,01,10"},
      {"$GPGSV,0,0,00"},
      {"$GPGSV,1,-1,01,01,10,020,30"},
      {"$GPGSV,1,1,01,01,10,020,30*00\n"},
      {"$GPGSV,1,1,05,01,10,020,30,02,10,020,30,03,10,020,30,04,10,020,30,05,10,020,30"}};
  for (const auto& broken : cases) {
    SkyReader reader;
    ReadAll(reader, GgaAt("120000") + WithChecksum(good));
    for (const std::string line : broken)
      EXPECT_FALSE(reader.Read(Fields(line.ends_with('\n') ? line : WithChecksum(line)))) << line;
    ReadAll(reader, WithChecksum(good));
    EXPECT_TRUE(reader.Finish());
    EXPECT_EQ(Show(reader.Latest()) + '\n', sky) << *broken.begin();
  }
  EXPECT_EQ(SkiesOf({"$GPGSV,1,1,02,07,99,361,30,1000,10,020,30", "$GPGSA,A,3,07,1000,,,,,,,,,,,,,",
                     "$GLGSV,1,1,01,a,45,120,30"}),
            "G07=7*:-/-/30\n");
  EXPECT_EQ(SkiesOf({"$GPGSV,1,1,04,01,-90,360,99,02,-91,361,100,03,90,0,1,999,1,2,0"}),
            "999=999:1/2/- G01=1:-90/360/99 G02=2:-/-/- G03=3:90/0/1\n");
}

TEST(HostSky, HoldsAHundredAndTwentyEightSatellitesHoweverManyCome) {
  SkyReader one;
  ReadAll(one, PagesOf("GB", 128));
  EXPECT_TRUE(one.Finish()) << "of a single group";
  EXPECT_EQ(one.Latest().satellites.size(), 128u);
  ReadAll(one, PagesOf("GB", 132));
  EXPECT_FALSE(one.Finish()) << "more than there can be";
  SkyReader reader;
  for (const char* talker : {"GP", "GL", "GA", "GB"}) ReadAll(reader, PagesOf(talker, 32));
  EXPECT_TRUE(reader.Finish());
  EXPECT_EQ(reader.Latest().in_view, 128);
  for (int i = 0; i < 100; ++i) {
    const std::string talker = {static_cast<char>('A' + i % 26), static_cast<char>('A' + i / 26 % 26)};
    ReadAll(reader, GgaAt(std::to_string(120000 + i % 60)) + PagesOf(talker, 128, ",1"));
  }
  reader.Finish();
  EXPECT_LE(reader.Latest().satellites.size(), Sky::kMost);
}

TEST(HostSky, ComesFromRecordsWhereSentencesHaveNoGroups) {
  const auto record = [](bool position) {
    CGPSData data;
    data.m_bPositionValid = position;
    data.m_bSatellitesComplete = data.m_bSatellitesChanged = true;
    data.m_nSatellitesInView = 2;
    data.m_dPDOP = 2.5;
    data.m_Satellites[0] = {0.5, 1.0, 1, true, true, 1};
    data.m_Satellites[1].m_bInView = true;  // an empty slot
    data.m_Satellites[3] = {0.0, 0.0, 66, false, true, 0};
    return data;
  };
  SkySource source;
  EXPECT_EQ(source.OnData(record(false)), nullptr) << "its text may be a sentence that tells more";
  const Sky* sky = source.OnText(Fields("$PASHR,SAT,..."));
  ASSERT_NE(sky, nullptr);
  EXPECT_EQ(Show(*sky), "G01=1*:29/57/1 R02=66:-/-/-");
  EXPECT_TRUE(sky->pdop == 2.5 && !sky->hdop && !sky->vdop && !sky->used);
  source.OnData(record(true));
  EXPECT_EQ(source.OnText(Fields(GgaAt("120000"))), nullptr) << "the same with a position";
  source.OnData(record(false));
  source.OnText(Fields(WithChecksum("$GPGSV,1,1,01,07,45,120,30")));
  sky = source.Finish();
  ASSERT_NE(sky, nullptr);
  EXPECT_EQ(Show(*sky), "G07=7:45/120/30");
  for (int i = 0; i < 300; ++i) source.OnText(Fields(GgaAt(std::to_string(120000 + i % 60))));
  source.OnData(record(false));
  EXPECT_NE(source.OnText(Fields("$PASHR,SAT,...")), nullptr) << "the receiver sends no groups any more";
}

TEST(HostSky, ReadsTheTailOfAPosition) {
  const struct {
    const char *sentence, *tail;
  } rows[] = {
      {"$GNGNS,120000,4807.038,N,01131.000,E,RR,13,0.9,25.63,-11.24,1.5,0031", "-11.24 1.5 0031"},
      {"$GPGGA,120000,,,,,2,08,0.9,25,M,46.9,M,1.5,0031", "46.9 1.5 0031"},
      {"$GPGGA,120000,,,,,2,08,0.9,25,M,46.9,m,,", "46.9  "},
      {"$GPGGA,120000,,,,,2,08,0.9,25,M,46.9,F,-1,a.B", "none -1 a.B"},
      {"$GPGGA,120000,,,,,2,08,0.9,25,M,inf,M,1;2,\xE9", "none  "},  // for others to read again
      {"$GPRMC,120000", "no position"},
  };
  for (const auto& [sentence, expected] : rows) {
    const auto tail = PositionTailOf(WithChecksum(sentence));
    const std::string separation = tail && tail->separation ? Print("%g", *tail->separation) : "none";
    EXPECT_EQ(tail ? separation + ' ' + tail->age + ' ' + tail->station : "no position", expected)
        << sentence;
  }
  EXPECT_FALSE(PositionTailOf("$GPGGA,120000,,,,,,,,,M,1,M,,*00"));
}
