#include "simulator/simulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace simulator {
namespace {

using Words = std::vector<std::string>;

Words Split(const std::string& text, char delimiter) {
  Words words(1);
  for (const char c : text) {
    if (c == delimiter) {
      words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  return words;
}

unsigned Xor(const std::string& text) {
  unsigned sum = 0;
  for (const char c : text) sum ^= static_cast<unsigned char>(c);
  return sum;
}

// The fields of a sentence with a good checksum, empty otherwise.
Words GoodSentence(const std::string& line) {
  const auto star = line.rfind('*');
  if (line.empty() || line[0] != '$' || star == std::string::npos || star + 3 != line.size()) return {};
  if (std::stoul(line.substr(star + 1), nullptr, 16) != Xor(line.substr(1, star - 1))) return {};
  return Split(line.substr(1, star - 1), ',');
}

Words Lines(const std::string& bytes) {
  Words lines;
  for (std::string line : Split(bytes, '\n')) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

// "GGA GSA VTG": which NMEA sentences, and SAT, are in the bytes, in alphabetical order.
std::string Kinds(const std::string& bytes) {
  std::set<std::string> kinds;
  for (const std::string& line : Lines(bytes)) {
    if (line.rfind("$GP", 0) == 0 && line.size() > 6 && line[6] == ',') kinds.insert(line.substr(3, 3));
    if (line.rfind("$PASHR,SAT", 0) == 0) kinds.insert("SAT");
  }
  std::string text;
  for (const std::string& kind : kinds) text += (text.empty() ? "" : " ") + kind;
  return text;
}

std::size_t Count(const std::string& bytes, const std::string& what) {
  std::size_t count = 0;
  for (auto at = bytes.find(what); at != bytes.npos; at = bytes.find(what, at + 1)) ++count;
  return count;
}

std::unique_ptr<Receiver> Make(const std::string& model, bool gga_only = false) {
  Options options;
  options.model = model;
  options.gga_only = gga_only;
  return MakeReceiver(options);
}

// Writes lines that stand between bars and gives what comes at once.
std::string Ask(Receiver& receiver, const std::string& lines) {
  for (const std::string& line : Split(lines, '|')) receiver.Receive(line + "\r\n");
  return receiver.Advance(0);
}

// Sentences.

// Checks that a value moves by no more than a step from one call to the next.
class Slow {
 public:
  explicit Slow(double step) : step_(step) {}
  void operator()(const std::string& key, double value, double circle = 1e9) {
    if (const auto last = last_.find(key); last != last_.end()) {
      EXPECT_LE(std::abs(std::remainder(value - last->second, circle)), step_) << key;
    }
    last_[key] = value;
  }

 private:
  double step_;
  std::map<std::string, double> last_;
};

TEST(Simulator, SendsAMinuteOfGoodSentencesThatChangeSlowly) {
  auto receiver = Make("Other");
  Slow minutes(0.02), metres(0.2), degrees(1), decibels(2), turn(3), speed(1);
  std::map<std::string, int> count;
  int page = 0;
  for (const std::string& line : Lines(receiver->Advance(60))) {
    const Words f = GoodSentence(line);
    ASSERT_FALSE(f.empty()) << line;
    ++count[f[0]];
    if (f[0] == "GPGGA") {
      ASSERT_EQ(f.size(), 15U) << line;
      minutes("latitude", std::stod(f[2].substr(2)));
      minutes("longitude", std::stod(f[4].substr(3)));
      metres("height", std::stod(f[9]));
      EXPECT_GE(std::stoi(f[7]), 4);
    } else if (f[0] == "GPGSA") {
      EXPECT_EQ(f.size(), 18U) << line;
    } else if (f[0] == "GPGSV") {
      page = f[2] == "1" ? 1 : page + 1;
      EXPECT_EQ(std::stoi(f[2]), page);
      const int in_view = std::stoi(f[3]), on_page = std::min(4, in_view - 4 * (page - 1));
      EXPECT_LE(in_view, 12);
      EXPECT_EQ(std::stoi(f[1]), (in_view + 3) / 4);
      ASSERT_EQ(f.size(), 4U + 4U * static_cast<unsigned>(on_page)) << line;
      for (std::size_t i = 4; i < f.size(); i += 4) {
        degrees("elevation of " + f[i], std::stod(f[i + 1]));
        if (std::stod(f[i + 1]) < 80) degrees("azimuth of " + f[i], std::stod(f[i + 2]), 360);
        decibels("signal of " + f[i], std::stod(f[i + 3]));
      }
    } else if (f[0] == "GPVTG") {
      turn("course", std::stod(f[1]), 360);
      speed("speed", std::stod(f[7]));
      EXPECT_GT(std::stod(f[7]), 3.6);
      EXPECT_LT(std::stod(f[7]), 60);
    }
  }
  EXPECT_EQ(count["GPGGA"], 60);
  EXPECT_EQ(count["GPGSA"], 60);
  EXPECT_EQ(count["GPVTG"], 60);
  EXPECT_GE(count["GPGSV"], 120);
}

TEST(Simulator, ReportsTheTruth) {
  auto receiver = Make("Other");
  Words last;
  for (const std::string& line : Lines(receiver->Advance(100))) {
    if (line.rfind("$GPGGA", 0) == 0) last = GoodSentence(line);
  }
  const Truth truth = receiver->TruthAt(receiver->Now());
  EXPECT_EQ(last[1], "080140.00");
  EXPECT_NEAR(std::stod(last[2].substr(2)) / 60 + 47, Degrees(truth.geodetic.latitude), 1e-7);
  EXPECT_NEAR(std::stod(last[4].substr(3)) / 60 + 9, Degrees(truth.geodetic.longitude), 1e-7);
  EXPECT_NEAR(std::stod(last[9]) + std::stod(last[11]), truth.geodetic.height, 0.006);
  EXPECT_EQ(truth.time.week, 2314);
  EXPECT_NEAR(truth.time.seconds, 2 * 86400 + 8 * 3600 + 100 + 18, 1e-6);  // a Tuesday, 18 leap seconds
}

TEST(Simulator, GivesTheSameBytesHoweverTimeIsCut) {
  auto whole = Make("CSI"), cut = Make("CSI");
  std::string pieces;
  for (int i = 0; i < 1000; ++i) pieces += cut->Advance(0.007);
  EXPECT_EQ(whole->Advance(7), pieces);
  EXPECT_LT(whole->NextOutputIn(), 1.0001);
}

TEST(Simulator, KeepsToItsRateAndToGgaOnly) {
  Options options;
  options.gga_only = true;
  options.rate_hz = 5;
  for (const std::string& model : Models()) {
    options.model = model;
    const std::string bytes = MakeReceiver(options)->Advance(10);
    EXPECT_EQ(Count(bytes, "$GPGGA"), 50U) << model;
    EXPECT_EQ(Kinds(bytes), "GGA") << model;
  }
}

TEST(Simulator, SaysNothingWhenSilent) {
  Options options;
  options.model = "CSI";
  options.silent = true;
  auto receiver = MakeReceiver(options);
  EXPECT_EQ(Ask(*receiver, "$PASHS,PEM,5|$PASHQ,PAR"), "");
  EXPECT_EQ(receiver->Advance(60), "");
}

TEST(Simulator, HasNoFixWithUnderFourSatellites) {
  auto receiver = Make("CSI");
  Ask(*receiver, "$PASHS,PEM,80|$PASHS,NME,GSV,A,ON");
  const Words lines = Lines(receiver->Advance(1));
  const Words gga = GoodSentence(lines.at(0)), gsa = GoodSentence(lines.at(1));
  ASSERT_EQ(gga.size(), 15U);
  EXPECT_EQ(gga[2] + gga[4] + gga[9], "");
  EXPECT_EQ(gga[6], "0");
  EXPECT_EQ(gsa.at(2), "1");
}

TEST(Simulator, SpreadsABurstOverTheLineWhenPaced) {
  auto receiver = Make("Other");
  receiver->SetPaced(true);
  EXPECT_EQ(Kinds(receiver->Advance(1)), "GGA");
  EXPECT_EQ(Kinds(receiver->Advance(0.05)), "");  // 70 characters take 73 ms
  EXPECT_EQ(Kinds(receiver->Advance(0.85)), "GSA GSV VTG");
}

TEST(Simulator, NamesTheOptionItRefuses) {
  const auto refusal = [](auto change) {
    Options options;
    change(options);
    try {
      MakeReceiver(options);
    } catch (const std::invalid_argument& error) {
      return std::string(error.what());
    }
    return std::string("none");
  };
  EXPECT_NE(refusal([](Options& o) { o.rate_hz = 0; }).find("rate_hz"), std::string::npos);
  EXPECT_NE(refusal([](Options& o) { o.latitude = 91; }).find("latitude"), std::string::npos);
  EXPECT_NE(refusal([](Options& o) { o.longitude = std::nan(""); }).find("longitude"), std::string::npos);
  const std::string model = refusal([](Options& o) { o.model = "csi"; });
  for (const std::string& name : Models()) EXPECT_NE(model.find('"' + name + '"'), std::string::npos);
  EXPECT_EQ(Models().size(), 19U);
}

// Command languages.

struct Change {
  const char* model;
  const char* lines;   ///< what the host writes, between bars
  const char* answer;  ///< part of what comes back at once; null if nothing may
  const char* kinds;   ///< the sentences that go out from then on
};

std::ostream& operator<<(std::ostream& out, const Change& change) {
  return out << change.model << ": " << change.lines;
}

class SimulatorLanguage : public testing::TestWithParam<Change> {};

TEST_P(SimulatorLanguage, ChangesWhatItIsTold) {
  const Change& change = GetParam();
  auto receiver = Make(change.model);
  const std::string answer = Ask(*receiver, change.lines);
  if (change.answer == nullptr) {
    EXPECT_EQ(answer, "");
  } else {
    EXPECT_NE(answer.find(change.answer), std::string::npos) << answer;
  }
  EXPECT_EQ(Kinds(receiver->Advance(6)), change.kinds);
  EXPECT_EQ(receiver->TakeComplaints(), Words());
}

constexpr const char* kAll = "GGA GSA GSV VTG";
const Change kChanges[] = {
    {"Ashtech", "$PASHS,NME,ALL,A,OFF|$PASHS,NME,GGA,A,ON", "$PASHR,ACK*3D\r\n$PASHR,ACK*3D\r\n", "GGA"},
    {"Racal", "$PASHS,NME,GSV,A,ON|$PASHS,NME,SAT,A,OFF", "$PASHR,ACK*3D", kAll},
    {"CSI", "$PASHS,PEM,12|$PASHS,PDP,14|$PASHS,HDP,10|$PASHS,SAV,Y|$PASHQ,PAR",
     "PMD:1 ALT:+00000.00 PDP:14 HDP:10 VDP:04\r\nPER:001.00 RCI:001.00\r\nPEM:12 SAV:Y\r\n",
     "GGA GSA SAT VTG"},
    {"CSI", "$PASHS,NME,GSA,A,OFF|$PASHS,NME,ZDA,A,ON|$PASHQ,PAR",
     "\r\nPRTA: OFF OFF OFF OFF OFF ON  ON  OFF OFF OFF ON  OFF OFF OFF ON \r\n", "GGA SAT VTG ZDA"},
    {"CSI", "$GPMSK,290.5,M,100,M,0|$GPCRQ,MSK", "$CRMSK,290.5,M,100,M,0*49\r\n", "GGA GSA SAT VTG"},
    {"CSI",
     "$PASHS,RTC,AUT,Y|$PASHS,RTC,REM,B|$PASHS,VDP,10|$PASHS,RAW,MBN,A,ON|$PASHS,RAW,MBN,A,OFF|"
     "$PASHS,RAW,PBN,A,OFF|$PASHS,RCI,0.250000|$PASHQ,PAR",
     "PER:001.00 RCI:000.25\r\n", "GGA GSA SAT VTG"},
    {"CSI", "$GPMSK,,A,,A,0|$GPCRQ,MSS", ",304.5,100*", "GGA GSA SAT VTG"},
    {"Starlink", "$PSLIS,NME,ALL,A,OFF|$PSLIS,NME,GGA,A,ON|$PSLIS,ELM,15|$PSLIQ,PAR",
     "$PSLIR,PAR,NMEA,GGA:1.0,GSA:0.0,ZDA:0.0,GLL:0.0,VTG:0.0,GSV:0.0*1A\r\n$PSLIR,PAR,MODE,ELM:15,", "GGA"},
    {"Starlink", "$GPMSK,300,M,,A,0|$PSLIQ,NME,MSS|$PSLIQ,NME,MSK", "$GPMSK,300.0,M,100,A,0*", kAll},
    {"Leica", "$PMVXG,007,,1,,,,,|$PMVXG,007,GGA,0,1,,1,6,2|$PMVXG,007,GSV,0,1,,5,,,|QRV Zelo", nullptr,
     "GGA GSV"},
    {"Trimble", "QRV Zelo", nullptr, kAll},
    {"Sokkia Axis", "$PMCAG,008,15,,,,10,,,,,,,,,,,|$PMCAG,004,908", "$PMCAG,908,15,,,,10.0,,", kAll},
    {"Sokkia Axis", "$PMCAG,005,0,900,0,906,0,907,0,GGA,1,GSA,0,VTG,0,GSV,0,ZDA,0,RMC,0,GLL,0", nullptr,
     "GGA"},
    {"Sokkia Axis", "$PMCAG,008,15,,,,,,,,,,5,,,,,|$GPCRQ,MSK", "$GPMSK,304.5,A,100,A,0*", kAll},
    {"Sokkia Axis3", "$JOFF|$JASC,GPGGA,1|$JMASK,7|$JFREQ,1530500.000000,1200|$JDIFF,BEACON|$JSHOW",
     "$>JSHOW,ASC,GPGGA,1.0\r\n$>JSHOW,FREQ,1530.5000,1200\r\n$>JSHOW,DIFF,BEACON\r\n$>JSHOW,MASK,7\r\n",
     "GGA"},
    {"CSI - MAX", "$JASC,GPVTG,0|$JFREQ,0.000000,1200|$JSHOW",
     "$>JSHOW,FREQ,0.0000,1200\r\n$>JSHOW,DIFF,WAAS\r\n", "GGA GSA GSV"},
    {"CSI - MAX", "$JI|$JGEO", "$>JGEO,", kAll},
    {"CSI - MAX", "$JLBEAM|$GPMSK,,A,,A,0|$JSAVE|$GPCRQ,MSK", "$CRMSK,304.5,A,", kAll},
    {"SiRF", "$PSRF103,02,00,00,01*26|$PSRF103,04,00,02,01*22", nullptr, "GGA GSV RMC VTG"},
    {"GSR2650 LB", "LOG  GPGGA ONTIME 1 0 NOHOLD|UNLOG  GPGSA|unlog  gpgsv|LOG LOGLISTA ONCE",
     ";2,COM2,GPGGA,ONTIME,1.000000,0.000000,NOHOLD,COM2,GPVTG,ONTIME,1.000000,0.000000,NOHOLD*", "GGA VTG"},
    {"GSR2650 LB", "ECUTOFF 10|LOG COM2 ECUTOFFA ONCE", ";10.000000000*", kAll},
    {"GSR2650 LB", "RTKSOURCE OMNISTAR|LOG COM2 RTKSOURCEA ONCE", ";OMNISTAR,ANY*", kAll},
    {"GSR2650 LB", "SBASCONTROL ENABLE AUTO|LOG COM2 SBASCONTROLA ONCE", ";ENABLE,AUTO,0,NONE*", kAll},
    {"GSR2650 LB",
     "RTKSOURCE AUTO ANY|PSRDIFFSOURCE AUTO ANY|SBASCONTROL ENABLE AUTO|LOG COM2 RTKSOURCEA ONCE",
     ";AUTO,ANY*", kAll},
    {"GSR2650 LB", "PSRDIFFSOURCE CDGPS|LOG COM2 PSRDIFFSOURCEA ONCE", ";CDGPS,ANY*", kAll},
    {"GSR2650 LB", "ASSIGNOMNI USER 1500 1200|LOG OMNIINFOA ONCE|LOG OMNISTATA ONCE", ";1500,1200,TRACKING,",
     kAll},
    {"GSR2650 LB", "LOG OMNIHPPOSA ONCE|LOG WAAS1A ONCE|LOG COM2 RXCONFIGA ONCE", "#WAAS1A,COM2,", kAll},
    {"GSR2650 LB",
     "UNDULATION TABLE|DATUM WGS84|USERDATUM 6378137 298.257222101 -.9910 1.9072 .5129 .000000125033 "
     ".0000000467845 .0000000565292 0 |datum user|UNDULATION USER -1.09|ASSIGNLBAND CDGPS 1547000 "
     "4800|SAVECONFIG",
     "<OK", kAll},
};
INSTANTIATE_TEST_SUITE_P(Lines, SimulatorLanguage, testing::ValuesIn(kChanges));

TEST(SimulatorLanguages, TakeSatellitesBelowTheElevationMaskAway) {
  const struct {
    const char *model, *line;
  } kMasks[] = {{"CSI", "$PASHS,NME,GSV,A,ON|$PASHS,PEM,30"},
                {"Starlink", "$PSLIS,ELM,30"},
                {"Sokkia Axis", "$PMCAG,008,15,,,,30,,,,,,,,,,,"},
                {"CSI - MAX", "$JMASK,30"},
                {"GSR2650 LB", "ECUTOFF 30"}};
  for (const auto& mask : kMasks) {
    auto receiver = Make(mask.model);
    Ask(*receiver, mask.line);
    int satellites = 0;
    for (const std::string& line : Lines(receiver->Advance(30))) {
      const Words f = GoodSentence(line);
      for (std::size_t i = 4; i + 3 < f.size() && f[0] == "GPGSV"; i += 4) {
        EXPECT_GE(std::stoi(f[i + 1]), 30) << mask.model;
        ++satellites;
      }
    }
    EXPECT_GE(satellites, 4 * 30) << mask.model;
  }
}

TEST(SimulatorLanguages, ShowTheSourceOfCorrectionsInTheQualityOfTheFix) {
  const struct {
    const char *model, *lines, *quality;
  } kSources[] = {
      {"CSI", "$GPMSK,,A,,A,0", "2"},
      {"CSI", "$GPMSK,120,M,,A,0", "1"},  // no beacon there
      {"Ashtech", "$PASHS,PEM,5", "1"},
      {"CSI - MAX", "$JDIFF,OFF", "1"},
      {"CSI - MAX", "$JDIFF,LBAND", "1"},  // wants the other application
      {"CSI - MAX", "$JAPP,1|$JDIFF,WAAS", "2"},
      {"CSI - MAX", "$JDIFF,BEACON", "2"},
      {"GSR2650 LB", "RTKSOURCE NONE|PSRDIFFSOURCE NONE|SBASCONTROL DISABLE AUTO", "1"},
      {"GSR2650 LB", "RTKSOURCE NONE|PSRDIFFSOURCE NONE|SBASCONTROL ENABLE AUTO", "9"},
      {"GSR2650 LB", "PSRDIFFSOURCE OMNISTAR|RTKSOURCE NONE|SBASCONTROL DISABLE AUTO", "2"},
  };
  for (const auto& source : kSources) {
    auto receiver = Make(source.model);
    Ask(*receiver, source.lines);
    EXPECT_EQ(GoodSentence(Lines(receiver->Advance(1)).at(0)).at(6), source.quality) << source.lines;
  }
}

TEST(SimulatorLanguages, ComplainAboutWhatTheyDoNotKnow) {
  for (const std::string& model : Models()) {
    auto receiver = Make(model);
    Ask(*receiver, "FOO\x01|$PASHX,1");
    EXPECT_EQ(receiver->TakeComplaints().size(), 2U) << model;
    EXPECT_EQ(receiver->TakeComplaints().size(), 0U) << model;
  }
  const struct {
    const char *model, *line, *complaint;
  } kBad[] = {
      {"CSI", "$PASHS,PEM,5*00", "bad checksum: $PASHS,PEM,5*00"},
      {"CSI", "$PASHS,PEM,x", "bad value: $PASHS,PEM,x"},
      {"Ashtech", "$GPCRQ,MSS", "unknown line: $GPCRQ,MSS"},  // has no beacon receiver
      {"SiRF", "$PSRF103,04,00,00,01", "bad checksum: $PSRF103,04,00,00,01"},
      {"GSR2650 LB", "LOG FOO ONCE", "bad value: LOG FOO ONCE"},
      {"CSI - MAX", "$JBIN,97,1", "bad value: $JBIN,97,1"},
      {"Other", "QRV Zelo", "unknown line: QRV Zelo"},
  };
  for (const auto& bad : kBad) {
    auto receiver = Make(bad.model);
    Ask(*receiver, bad.line);
    EXPECT_EQ(receiver->TakeComplaints(), Words{bad.complaint});
  }
}

TEST(SimulatorLanguages, UnderstandLinesThatComeInPieces) {
  auto receiver = Make("CSI");
  for (const char c : std::string("$PASHS,PEM,20\r\n\r\n$PASHS,PEM,21\n$GPCRQ,MS"))
    receiver->Receive({&c, 1});
  EXPECT_EQ(receiver->Advance(0), "$PASHR,ACK*3D\r\n$PASHR,ACK*3D\r\n");
  receiver->Receive("K\r\n");
  EXPECT_EQ(receiver->Advance(0).substr(0, 7), "$CRMSK,");
  receiver->Receive(std::string(5000, 'x'));  // never ends
  EXPECT_GE(receiver->TakeComplaints().size(), 1U);
}

TEST(SimulatorLanguages, FallSilentAtAResetAndComeBackWithWhatTheyKeep) {
  auto csi = Make("CSI");
  Ask(*csi, "$PASHS,NME,ALL,A,OFF|$PASHS,SAV,Y");
  EXPECT_EQ(Ask(*csi, "$PASHS,RST|$PASHS,PEM,9"), "$PASHR,ACK*3D\r\n");  // deaf to the second
  EXPECT_EQ(csi->Advance(1.9), "");
  EXPECT_EQ(Kinds(csi->Advance(1.1)), "GGA GSA SAT VTG");

  auto starlink = Make("Starlink");
  Ask(*starlink, "$PSLIS,NME,ALL,A,OFF|$PSLIS,RST,CLR");
  EXPECT_EQ(starlink->Advance(2.9), "");
  EXPECT_EQ(Kinds(starlink->Advance(1.1)), kAll);

  auto gsr = Make("GSR2650 LB");
  Ask(*gsr, "ECUTOFF 15|SAVECONFIG|ECUTOFF 25|RESET 0");
  EXPECT_EQ(gsr->Advance(4.9), "");
  gsr->Advance(2);
  EXPECT_NE(Ask(*gsr, "LOG COM2 ECUTOFFA ONCE").find(";15.0"), std::string::npos);

  auto max = Make("CSI - MAX");
  Ask(*max, "$JMASK,15|$JSAVE|$JMASK,25|$JAPP,2");  // another application starts over, and nothing is lost
  EXPECT_EQ(max->Advance(2.9), "");
  max->Advance(1);
  EXPECT_NE(Ask(*max, "$JDIFF,LBAND|$JSHOW").find("MASK,25"), std::string::npos);
  EXPECT_EQ(GoodSentence(Lines(max->Advance(1)).at(0)).at(6), "2");
  max->PowerCycle();
  EXPECT_EQ(max->Advance(2.9), "");
  max->Advance(1);
  EXPECT_NE(Ask(*max, "$JSHOW").find("MASK,15"), std::string::npos);
}

// Binary protocols.

std::string Bytes(std::initializer_list<int> values) {
  std::string bytes;
  for (const int value : values) bytes += static_cast<char>(value);
  return bytes;
}

const std::string kSwitchToText = Bytes({0xA0, 0xA2, 0x00, 0x18, 0x81, 0x02}) + std::string(20, '\0') +
                                  Bytes({0x12, 0xC0, 0x01, 0x55, 0xB0, 0xB3});

TEST(SimulatorSirf, GoesToBinaryAndComesBack) {
  auto receiver = Make("SiRF");
  Ask(*receiver, "$PSRF100,0,4800,8,1,0*0F");
  const std::string binary = receiver->Advance(10);
  EXPECT_EQ(Kinds(binary), "");
  EXPECT_EQ(Count(binary, Bytes({0xA0, 0xA2, 0, 41, 2})), 10U);
  EXPECT_EQ(binary.size(), 10U * 49);

  receiver->Receive(Bytes({0xA0, 0xA2, 0x00, 0x07, 0x85, 0x01, 0, 0, 0, 0, 0, 0x00, 0x86, 0xB0, 0xB3}));
  for (const char c : kSwitchToText) receiver->Receive({&c, 1});
  EXPECT_EQ(receiver->Advance(3), "");  // the switch turned every sentence off
  Ask(*receiver, "$PSRF103,00,00,02,01*26");
  const std::string text = receiver->Advance(10);
  EXPECT_EQ(Count(text, "$GPGGA"), 5U);
  EXPECT_EQ(GoodSentence(Lines(text).at(0)).at(6), "2");
  EXPECT_EQ(receiver->TakeComplaints(), Words());
}

TEST(SimulatorSirf, RefusesADamagedFrameAndGoesOnBehindIt) {
  auto receiver = Make("SiRF");
  std::string damaged = kSwitchToText;
  damaged[10] = 1;
  receiver->Receive(damaged + "$PSRF103,05,00,00,01*21\r\n");
  EXPECT_EQ(Kinds(receiver->Advance(2)), "GGA GSA GSV");
  EXPECT_EQ(receiver->TakeComplaints().size(), 1U);
}

unsigned Little(const std::string& bytes, std::size_t at, std::size_t width) {
  unsigned value = 0;
  while (width-- > 0) value = value << 8 | static_cast<unsigned char>(bytes.at(at + width));
  return value;
}

TEST(SimulatorBinary, SendsBlocksOfTheirLengthWithTheirSum) {
  const struct {
    const char* line;
    std::size_t length;
  } kBlocks[] = {{"$JBIN,95,0.2", 140}, {"$JBIN,96,0.2", 312}};
  for (const auto& block : kBlocks) {
    auto receiver = Make("CSI - MAX");
    Ask(*receiver, std::string("$JOFF|") + block.line);
    const std::string bytes = receiver->Advance(1);
    ASSERT_EQ(bytes.size(), 5 * block.length) << block.line;
    for (std::size_t at = 0; at < bytes.size(); at += block.length) {
      EXPECT_EQ(bytes.substr(at, 4), "$BIN");
      EXPECT_EQ(Little(bytes, at + 6, 2), block.length - 12);
      unsigned sum = 0;
      for (std::size_t i = 8; i < block.length - 4; ++i) sum += static_cast<unsigned char>(bytes[at + i]);
      EXPECT_EQ(Little(bytes, at + block.length - 4, 2), sum & 0xFFFF);
      EXPECT_EQ(bytes.substr(at + block.length - 2, 2), "\r\n");
    }
  }
}

TEST(SimulatorBinary, SendsOemLogsOfTheirLengthWithTheirCheck) {
  auto receiver = Make("GSR2650 LB");
  for (const char* name : {"GPGGA", "GPGSA", "GPGSV", "GPVTG"}) Ask(*receiver, std::string("UNLOG ") + name);
  Ask(*receiver, "LOG RANGEB ONTIME 1|LOG RAWEPHEMB ONCHANGED|LOG ALMANACB ONCHANGED");
  const std::string bytes = receiver->Advance(5);
  std::map<unsigned, int> count;
  for (std::size_t at = 0; at < bytes.size();) {
    ASSERT_EQ(bytes.substr(at, 3), "\xAA\x44\x12");
    const std::size_t length = Little(bytes, at + 3, 1) + Little(bytes, at + 8, 2);
    unsigned crc = 0;
    for (std::size_t i = at; i < at + length; ++i) {
      crc ^= static_cast<unsigned char>(bytes.at(i));
      for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
    }
    EXPECT_EQ(Little(bytes, at + length, 4), crc);
    ++count[Little(bytes, at + 4, 2)];
    at += length + 4;
  }
  EXPECT_EQ(count[43], 5);
  EXPECT_GE(count[41], 4);  // each satellite once
  EXPECT_EQ(count[73], 1);
}

}  // namespace
}  // namespace simulator
