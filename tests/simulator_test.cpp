// Simulated receivers and the library at the two ends of a line: each shows the mistakes of the other.
#include "simulator/simulator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "gpsengine/engine/gpsengine.h"
#include "host/commands/operations.h"
#include "host/records/format.h"
#include "simulator/linespeed.h"
#include "tests/support/conversation.h"
#include "tests/support/hostwindow.h"
#include "tests/support/sharedstate.h"

using namespace std::string_literals;
using simulator::MakeReceiver;
using simulator::Models;
using simulator::Options;

namespace {

constexpr double kLight = 299792458.0, kWavelength = kLight / 1575.42e6;

std::unique_ptr<simulator::Receiver> Make(const std::string& model) {
  Options options;
  options.model = model;
  return MakeReceiver(options);
}

std::vector<std::string> Split(const std::string& text, char delimiter) {
  std::vector<std::string> pieces;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, delimiter);) pieces.push_back(piece);
  return pieces;
}

// Writes lines that stand between bars and gives what comes at once.
std::string Ask(simulator::Receiver& receiver, const std::string& lines) {
  for (const std::string& line : Split(lines, '|')) receiver.Receive(line + "\r\n");
  return receiver.Advance(0);
}

// "GGA GSA VTG": which NMEA sentences, and SAT, are in the bytes, in alphabetical order.
std::string Kinds(const std::string& bytes) {
  std::set<std::string> kinds;
  for (const std::string& line : Split(bytes, '\n')) {
    if (line.starts_with("$GP") && line.find(',') == 6) kinds.insert(line.substr(3, 3));
    if (line.starts_with("$PASHR,SAT")) kinds.insert("SAT");
  }
  std::string text;
  for (const std::string& kind : kinds) text += (text.empty() ? "" : " ") + kind;
  return text;
}

int Count(const std::string& bytes, const std::string& what) {
  int count = 0;
  for (auto at = bytes.find(what); at != bytes.npos; at = bytes.find(what, at + 1)) ++count;
  return count;
}

class Simulated : public testing::Test {
 protected:
  Simulated() { app.SetMainWnd(&window); }
  ~Simulated() override { line.SetStepHandler({}); }

  void Plug(const std::string& model, Options options = {}) {
    line.SetStepHandler({});
    SharedState::Reset();
    options.model = model;
    simulated = MakeReceiver(options);
    receiver = engine.FindReceiver(CString::FromUtf8(model));
    receiver->SetupReceiver(1, 0, 0.0, "", false);
    engine.SetReceiver(receiver);
    engine.m_bAttachRawData = true;
    line.SetStepHandler([this](const CRehearsal::Step& step) {
      simulated->Receive(step.bytes);
      Pass(step.ms / 1000.0);
    });
    receiver->Initialize();
    Forget();
  }
  /// Lets the receiver send for so long. What it sends.
  std::string Pass(double seconds) {
    std::string all;
    for (; seconds >= 0; seconds -= 1) {  // no more at a time than a stream may hold
      const std::string bytes = simulated->Advance(std::min(seconds, 1.0));
      CBinBuffer chunk(bytes.data(), static_cast<int>(bytes.size()));
      engine.UpdateGPSBuffer(chunk);
      window.Drain();
      all += bytes;
    }
    heard += all;
    return all;
  }
  /// Operations as a user writes them, between semicolons.
  void Do(const std::string& operations) {
    for (const std::string& call : Split(operations, ';')) {
      std::vector<std::string> words = Split(call, ' ');
      const auto& operation = host::FindOperation(words[0]);
      words.erase(words.begin());
      host::Prepare(operation, {words})(*receiver);
    }
  }
  /// What the program would show of what has come, then the bytes.
  std::string Shown() const {
    std::string shown;
    const auto sink = host::MakeSink(host::Format::json, shown, "", host::Geoid::none);
    host::EpochReader epochs;
    for (const CGPSData& record : window.records) sink->OnData(epochs.Read(record));
    return shown + heard;
  }
  void Forget() {
    window.records.clear();
    window.epochs.clear();
    window.ephemerides.clear();
    heard.clear();
  }
  /// No slip on either side.
  void ExpectUnderstood() {
    EXPECT_EQ(simulated->TakeComplaints(), std::vector<std::string>());
    EXPECT_EQ(receiver->GetChecksumErrors() + receiver->GetBadBinaryMessages(), 0);
  }

  CRehearsal line;
  CWinApp app{"gpsengine-test"};
  HostWindow window;
  CGPSEngine engine;
  CGPSReceiver* receiver = nullptr;
  std::string heard;
  std::unique_ptr<simulator::Receiver> simulated;
};

TEST_F(Simulated, ReceiverUnderstandsAllThatItsDriverSays) {
  for (const auto& driver : engine.GetReceivers())
    EXPECT_EQ(Talk(*driver).complaints, std::vector<std::string>()) << driver->GetName().ToUtf8();
}

TEST_F(Simulated, ReceiverDoesWhatItIsToldAndReportsIt) {
  constexpr const char* kUsual = "GGA GSA GSV VTG";
  constexpr const char* kCsi = "GGA GSA SAT VTG";
  const struct {
    const char *model, *operations;
    const char* shown;  // somewhere in what the program shows
    const char* kinds;  // the sentences that go out from then on
  } rows[] = {
      {"Ashtech", "gga-only", "", "GGA"},
      {"Racal", "default-nmea", "", "GGA GSA GSV SAT VTG"},
      {"CSI", "set-elevation-mask 12;query-settings", "PEM:12 SAV:", kCsi},
      {"CSI", "gga-only;query-nmea",
       "\r\nPRTA: OFF OFF OFF OFF OFF ON  OFF OFF OFF OFF OFF OFF OFF OFF OFF\r\n", "GGA"},
      {"CSI", "set-beacon 290.5 100;query-beacon", R"("beaconFrequency":290.5,"beaconBitRate":100)", kCsi},
      {"CSI", "set-beacon auto;query-beacon", R"("beaconAutoTune":true)", kCsi},
      {"CSI", "send $GPMSK,120,M,,A,0;gga-only", R"("status":1)", "GGA"},  // no beacon there
      {"CSI", "raw-interval 5;reset", R"("status":2)", kCsi},
      {"Starlink", "gga-only;query-nmea", R"("nmeaGGA":"on","nmeaGSA":"off")", "GGA"},
      {"Starlink", "set-elevation-mask 15;query-elevation-mask", R"("elevationMask":15)", kUsual},
      {"Starlink", "set-beacon 300;query-beacon", R"("beaconFrequency":300)", kUsual},
      {"Starlink", "gga-only;reset", "", kUsual},
      {"Leica", "start;keep-alive", "", "GGA GSA GSV"},
      {"Trimble", "keep-alive", "", kUsual},
      {"Sokkia Axis", "set-elevation-mask 10;query-elevation-mask", R"("elevationMask":10)", kUsual},
      {"Sokkia Axis", "gga-only;set-beacon auto;query-beacon", R"("beaconAutoTune":true)", "GGA"},
      {"Sokkia Axis3", "gga-only;query-nmea", R"("nmeaGGA":"on")", "GGA"},
      {"Sokkia Axis3", "set-elevation-mask 7;query-elevation-mask", R"("elevationMask":7)", kUsual},
      {"Sokkia Axis3", "set-lband 1530.5 1200;query-dgps", R"("lbandMode":"fixed")", kUsual},
      {"CSI - MAX", "set-dgps none;query-dgps", R"("dgpsMode":"none")", kUsual},
      {"CSI - MAX", "set-dgps lband;query-dgps", R"("dgpsMode":"lband")", kUsual},
      {"CSI - MAX", "set-dgps waas;query-dgps", R"("dgpsMode":"waas")", kUsual},
      {"CSI - MAX", "set-dgps beacon;query-beacon", R"("beaconFrequency":304.5)", kUsual},
      {"CSI - MAX", "query-omnistar;query-lband-satellites", "$>JGEO", kUsual},
      {"SiRF", "gga-only", "", "GGA"},
      {"SiRF", "set-dgps waas", R"("status":2)", kUsual},
      {"SiRF", "set-dgps none", R"("status":1)", kUsual},
      {"SiRF", "reset", "", kUsual},
      {"GSR2650 LB", "gga-only;query-nmea", R"("nmeaGGA":"on","nmeaGSA":"off")", "GGA"},
      {"GSR2650 LB", "set-elevation-mask 10;query-elevation-mask", R"("elevationMask":10)", kUsual},
      {"GSR2650 LB", "set-dgps none;query-dgps", R"("status":1)", kUsual},
      {"GSR2650 LB", "set-dgps beacon;query-dgps", R"("dgpsMode":"beacon")", kUsual},
      {"GSR2650 LB", "set-dgps waas;query-dgps", R"("dgpsMode":"waas")", kUsual},
      {"GSR2650 LB", "set-dgps cdgps;query-dgps", R"("dgpsMode":"cdgps")", kUsual},
      {"GSR2650 LB", "set-dgps omnistar;query-dgps", R"("dgpsMode":"omnistar")", kUsual},
      {"GSR2650 LB", "set-lband 1500 1200;query-omnistar", "1500000,1200,TRACKING", kUsual},
      {"GSR2650 LB", "query-waas;send-correction;set-cdgps-frequency 1547", "$WAAS1,", kUsual},
      {"GSR2650 LB", "gga-only;reset", "", kUsual},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.model) + ": " + row.operations);
    Plug(row.model);
    Do(row.operations);
    Pass(8);
    EXPECT_EQ(Kinds(Pass(6)), row.kinds);
    EXPECT_NE(Shown().find(row.shown), std::string::npos);
    ExpectUnderstood();
  }
}

TEST_F(Simulated, ReceiverTellsTheTruthOfPlaceMotionAndClock) {
  for (const bool moving : {true, false}) {
    Options options;
    options.moving = moving;
    Plug("Ashtech", options);
    Do("post-processing on");
    Forget();
    Pass(90);
    ExpectUnderstood();
    int fixes = 0;
    for (const CGPSData& fix : window.records) {
      if (!fix.m_bPositionValid || !fix.m_bVelocityValid) continue;
      ++fixes;
      const auto truth =
          simulated->TruthAt({2314, 2 * 86400 + fix.m_dTimeOfDay + 18});  // a Tuesday, leap seconds
      EXPECT_NEAR(fix.m_dLatitude, truth.geodetic.latitude, 2e-9);
      EXPECT_NEAR(fix.m_dLongitude, truth.geodetic.longitude, 2e-9);
      EXPECT_NEAR(fix.m_dAltitude + options.geoid_separation, truth.geodetic.height, 0.06);
      EXPECT_NEAR(fix.m_dSpeed, simulator::Length(truth.velocity), 0.5);
      EXPECT_GE(fix.m_nSatellitesUsed, 4);
      EXPECT_LE(fix.m_nSatellitesInView, 12);
    }
    EXPECT_GE(fixes, 85);
    ASSERT_EQ(window.epochs.size(), 90u);
    std::map<int, CGPSSatelliteDataRaw> before;
    for (const CGPSDataRaw& epoch : window.epochs) {
      const auto truth = simulated->TruthAt({2314, epoch.m_dCorrectedTime});
      EXPECT_NEAR(epoch.m_dLatitude, simulator::Degrees(truth.geodetic.latitude), 1e-9);
      EXPECT_NEAR(epoch.m_dLongitude, simulator::Degrees(truth.geodetic.longitude), 1e-9);
      EXPECT_NEAR(epoch.m_dHeight, truth.geodetic.height, 1e-3);
      EXPECT_NEAR(epoch.m_dClockOffset, kLight * truth.clock_offset, 0.01);
      EXPECT_NEAR(epoch.m_dClockDrift, kLight * truth.clock_drift, 1e-5);
      EXPECT_TRUE(epoch.m_bEpochComplete) << "it has counted down";
      for (int i = 0; i < epoch.GetNumSV(); ++i) {
        const CGPSSatelliteDataRaw& now = epoch.m_Satellites[i];
        const double ambiguity = now.m_dCarrierPhase - now.m_dPseudorange / kWavelength;
        EXPECT_NEAR(ambiguity, std::round(ambiguity), 1e-4);
        if (const auto last = before.find(now.m_nPRN); last != before.end()) {
          // The mean of two Dopplers is the fall of phase in the second between them, but for the curvature.
          const double fall = last->second.m_dCarrierPhase - now.m_dCarrierPhase;
          EXPECT_NEAR((now.m_dDoppler + last->second.m_dDoppler) / 2, fall, 0.02);
        }
        before[now.m_nPRN] = now;
      }
    }
  }
}

TEST_F(Simulated, SatellitesMoveSlowlyAndStayAboveTheMask) {
  for (const char* model : {"CSI", "Starlink", "Sokkia Axis", "CSI - MAX", "GSR2650 LB"}) {
    Plug(model);
    Do("default-nmea;set-elevation-mask 30");
    Pass(1);
    Forget();
    Pass(30);
    std::map<int, CGPSSatelliteData> before;
    int seen = 0;
    host::EpochReader epochs;
    for (const CGPSData& record : window.records) {
      for (const CGPSSatelliteData& satellite : record.m_Satellites) {
        if (!satellite.m_bInView || !record.m_bSatellitesComplete) continue;
        const auto last = before.insert({satellite.m_nPRN, satellite}).first;
        EXPECT_GE(satellite.m_dElevation, simulator::Radians(29.99)) << model;
        EXPECT_NEAR(satellite.m_dElevation, last->second.m_dElevation, simulator::Radians(1.01));
        EXPECT_NEAR(std::remainder(satellite.m_dAzimuth - last->second.m_dAzimuth, 2 * simulator::kPi), 0,
                    simulator::Radians(satellite.m_dElevation > 1.4 ? 360 : 3));
        EXPECT_NEAR(satellite.m_nSNR, last->second.m_nSNR, 2);
        last->second = satellite;
        ++seen;
      }
    }
    EXPECT_GE(seen, 4 * 30) << model;
  }
}

TEST_F(Simulated, RawDataComeAtTheirIntervalWithEveryEphemeris) {
  Plug("Ashtech");
  Do("post-processing on");
  Pass(1);
  std::set<int> told;
  for (const auto& ephemeris : window.ephemerides) told.insert(ephemeris.m_nPRN);
  ASSERT_FALSE(window.epochs.empty());
  for (int i = 0; i < window.epochs[0].GetNumSV(); ++i)
    EXPECT_TRUE(told.contains(window.epochs[0].m_Satellites[i].m_nPRN));
  Forget();
  Pass(5.0 * static_cast<double>(told.size()));
  EXPECT_EQ(window.ephemerides.size(), told.size()) << "each again, in turn";
  Do("raw-interval 0.25");
  Forget();
  Pass(10);
  ASSERT_EQ(window.epochs.size(), 40u);
  EXPECT_NEAR(window.epochs[1].m_dReceiverTime - window.epochs[0].m_dReceiverTime, 0.25, 1e-9);
  Do("post-processing off");
  Forget();
  Pass(10);
  EXPECT_TRUE(window.epochs.empty() && window.ephemerides.empty());
}

TEST(Simulator, GivesTheSameBytesHoweverTimeIsCut) {
  auto whole = Make("CSI"), cut = Make("CSI");
  std::string pieces;
  for (int i = 0; i < 1000; ++i) pieces += cut->Advance(0.007);
  EXPECT_EQ(whole->Advance(7), pieces);
  EXPECT_LT(whole->NextOutputIn(), 1.0001);
}

TEST(Simulator, KeepsToItsOptions) {
  Options options;
  options.gga_only = true;
  options.rate_hz = 5;
  for (const std::string& model : Models()) {
    options.model = model;
    const std::string bytes = MakeReceiver(options)->Advance(10);
    EXPECT_EQ(Count(bytes, "$GPGGA"), 50) << model;
    EXPECT_EQ(Kinds(bytes), "GGA") << model;
  }
  options.silent = true;
  options.model = "CSI";
  const auto silent = MakeReceiver(options);
  EXPECT_EQ(Ask(*silent, "$PASHS,PEM,5|$PASHQ,PAR") + silent->Advance(60), "");
}

TEST(Simulator, HasNoFixWithUnderFourSatellites) {
  const auto receiver = Make("CSI");
  Ask(*receiver, "$PASHS,PEM,80");
  EXPECT_NE(receiver->Advance(1).find(",,,,,0,"), std::string::npos);
}

TEST(Simulator, SpreadsABurstOverTheLineWhenPaced) {
  const auto receiver = Make("Other");
  receiver->SetPaced(true);
  EXPECT_EQ(Kinds(receiver->Advance(1)), "GGA");
  EXPECT_EQ(Kinds(receiver->Advance(0.05)), "");  // 70 characters take 73 ms
  EXPECT_EQ(Kinds(receiver->Advance(0.85)), "GSA GSV VTG");
}

TEST(Simulator, NamesTheOptionItRefuses) {
  Options rate, latitude, longitude, model;
  rate.rate_hz = 0;
  latitude.latitude = 91;
  longitude.longitude = std::nan("");
  model.model = "csi";
  for (const auto& [options, name] : {std::pair(rate, "rate_hz"),
                                      {latitude, "latitude"},
                                      {longitude, "longitude"},
                                      {model, R"("Ashtech" "CSI" "CSI - MAX")"}}) {
    try {
      MakeReceiver(options);
      ADD_FAILURE() << name;
    } catch (const std::invalid_argument& error) {
      EXPECT_NE(std::string(error.what()).find(name), std::string::npos) << error.what();
    }
  }
}

TEST(Simulator, ComplainsAboutWhatItsLanguageDoesNotKnow) {
  for (const std::string& model : Models()) {
    const auto receiver = Make(model);
    Ask(*receiver, "FOO\x01|$PASHX,1");
    EXPECT_EQ(receiver->TakeComplaints().size(), 2u) << model;
    EXPECT_EQ(receiver->TakeComplaints().size(), 0u) << model;
  }
  const struct {
    const char *model, *line, *reason;
  } rows[] = {
      {"CSI", "$PASHS,PEM,5*00", "bad checksum: "},       {"CSI", "$PASHS,PEM,x", "bad value: "},
      {"Ashtech", "$GPCRQ,MSS", "unknown line: "},  // has no beacon receiver
      {"SiRF", "$PSRF103,04,00,00,01", "bad checksum: "}, {"GSR2650 LB", "LOG FOO ONCE", "bad value: "},
      {"CSI - MAX", "$JBIN,97,1", "bad value: "},         {"Other", "QRV Zelo", "unknown line: "},
  };
  for (const auto& [model, said, reason] : rows) {
    const auto receiver = Make(model);
    Ask(*receiver, said);
    EXPECT_EQ(receiver->TakeComplaints(), std::vector{reason + std::string(said)});
  }
}

TEST(Simulator, UnderstandsLinesThatComeInPieces) {
  const auto receiver = Make("CSI");
  for (const char c : "$PASHS,PEM,20\r\n\r\n$PASHS,PEM,21\n$GPCRQ,MS"s) receiver->Receive({&c, 1});
  EXPECT_EQ(receiver->Advance(0), "$PASHR,ACK*3D\r\n$PASHR,ACK*3D\r\n");
  receiver->Receive("K\r\n");
  EXPECT_TRUE(receiver->Advance(0).starts_with("$CRMSK,"));
  receiver->Receive(std::string(5000, 'x'));  // never ends
  EXPECT_GE(receiver->TakeComplaints().size(), 1u);
}

TEST(Simulator, FallsSilentAtAResetAndComesBackWithWhatItKeeps) {
  const struct {
    const char *model, *lines;
    double silence;
    const char *question, *answer;
  } rows[] = {
      // Deaf to what follows the reset.
      {"CSI", "$PASHS,NME,ALL,A,OFF|$PASHS,SAV,Y|$PASHS,RST|$PASHS,PEM,9", 1.9, "$PASHQ,PAR", "PEM:05"},
      {"CSI", "$PASHS,NME,ALL,A,OFF|$PASHS,SAV,Y|$PASHS,RST", 1.9, "", "$PASHR,SAT"},
      {"Starlink", "$PSLIS,NME,ALL,A,OFF|$PSLIS,RST,CLR", 2.9, "", "$GPGSV"},
      {"GSR2650 LB", "ECUTOFF 15|SAVECONFIG|ECUTOFF 25|RESET 0", 4.9, "LOG COM2 ECUTOFFA ONCE", ";15.0"},
      {"CSI - MAX", "$JMASK,15|$JSAVE|$JMASK,25", 2.9, "$JSHOW", "MASK,15"},  // its power is taken away
      // Another application starts over, and nothing is lost.
      {"CSI - MAX", "$JMASK,15|$JSAVE|$JMASK,25|$JAPP,2", 2.9, "$JDIFF,LBAND|$JSHOW", "MASK,25"},
  };
  for (const auto& row : rows) {
    const auto receiver = Make(row.model);
    Ask(*receiver, row.lines);
    if (std::string(row.lines).ends_with("25")) receiver->PowerCycle();
    EXPECT_EQ(receiver->Advance(row.silence), "") << row.lines;
    receiver->Advance(0.5);
    const std::string answer = Ask(*receiver, row.question);
    EXPECT_NE((answer + receiver->Advance(2)).find(row.answer), std::string::npos) << row.lines << answer;
  }
}

// Binary protocols.

TEST(Simulator, RefusesADamagedSirfFrameAndGoesOnBehindIt) {
  const auto receiver = Make("SiRF");
  receiver->Receive("\xA0\xA2\0\x18\x81\2\0\0\0\0\1"s + std::string(15, '\0') + "\x12\xC0\1\x55\xB0\xB3" +
                    "$PSRF103,05,00,00,01*21\r\n");
  EXPECT_EQ(Kinds(receiver->Advance(2)), "GGA GSA GSV");
  EXPECT_EQ(receiver->TakeComplaints().size(), 1u);
  Ask(*receiver, "$PSRF100,0,4800,8,1,0*0F");
  const std::string binary = receiver->Advance(10);
  EXPECT_EQ(Count(binary, "\xA0\xA2\0\x29\2"s), 10);
  EXPECT_EQ(binary.size(), 10u * 49);
}

unsigned Little(const std::string& bytes, std::size_t at, std::size_t width) {
  unsigned value = 0;
  while (width-- > 0) value = value << 8 | static_cast<unsigned char>(bytes.at(at + width));
  return value;
}

TEST(Simulator, SendsBlocksOfTheirLengthWithTheirSum) {
  for (const auto& [ask, length] : {std::pair("$JOFF|$JBIN,95,0.2", 140u), {"$JOFF|$JBIN,96,0.2", 312u}}) {
    const auto receiver = Make("CSI - MAX");
    Ask(*receiver, ask);
    const std::string bytes = receiver->Advance(1);
    ASSERT_EQ(bytes.size(), 5 * length) << ask;
    for (std::size_t at = 0; at < bytes.size(); at += length) {
      unsigned sum = 0;
      for (const char c : bytes.substr(at + 8, length - 12)) sum += static_cast<unsigned char>(c);
      EXPECT_EQ(bytes.substr(at, 4) + bytes.substr(at + length - 2, 2), "$BIN\r\n");
      EXPECT_EQ(Little(bytes, at + 6, 2), length - 12);
      EXPECT_EQ(Little(bytes, at + length - 4, 2), sum & 0xFFFF);
    }
  }
}

TEST(Simulator, SendsOemLogsOfTheirLengthWithTheirCheck) {
  const auto receiver = Make("GSR2650 LB");
  Ask(*receiver, "UNLOG GPGGA|UNLOG GPGSA|UNLOG GPGSV|UNLOG GPVTG");
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

// In real time, at the end of a pseudo-terminal.

TEST(HeardAt, IsThePlainTextOnlyAtTheRateOfTheSender) {
  const std::string text = "$GPGGA,080001.00";
  for (const int rate : {9600, 9700})
    EXPECT_EQ(simulator::HeardAt(text, 9600, rate), text);  // a few percent off
  for (const int rate : {2400, 4800, 19200, 115200}) {
    const std::string heard = simulator::HeardAt(text, 9600, rate);
    EXPECT_FALSE(heard.empty());
    EXPECT_EQ(heard.find("GPG"), std::string::npos) << rate;
  }
}

TEST(PtyRunner, StopsAtOnceWhenNobodyReadsAndGoesOnUntilItHangsUp) {
  simulator::PtyRunner::Settings settings;
  settings.speed_up = 1e5;  // the terminal is full in no time
  simulator::PtyRunner runner(Make("CSI"), settings);
  MapComPort(7, CString::FromUtf8(runner.PortName()));
  CSerialPort peer;
  peer.SetPortNumber(7);
  peer.SetBaudRate(9600);
  ASSERT_TRUE(peer.Open());
  runner.Start();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const auto start = std::chrono::steady_clock::now();
  runner.Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));

  runner.Start();
  peer.Write("FOO\r\n");
  std::vector<std::string> complaints;
  CString text;
  bool cancel = false;
  for (int i = 0; i < 1000 && complaints.empty(); ++i) {
    EXPECT_TRUE(peer.ReadReply(text, cancel, "\r\n", "$GPGGA", ""));
    complaints = runner.TakeComplaints();
  }
  EXPECT_EQ(complaints, std::vector{"unknown line: FOO"s});
  runner.HangUp();
  for (int i = 0; i < 1000 && peer.Read(text, cancel); ++i) {
  }
  EXPECT_FALSE(peer.Write("BAR\r\n"));
  runner.Start();  // has no line any more
  runner.Stop();
}

}  // namespace
