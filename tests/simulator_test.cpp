// Simulated receivers and the library at the two ends of a line: each shows the mistakes of the other.
#include <set>

#include "host/records/format.h"
#include "tests/support/conversation.h"
#include "tests/support/enginetest.h"

using namespace std::string_literals;
using simulator::MakeReceiver;
using simulator::Models;
using simulator::Options;

namespace {

constexpr double kLight = 299792458.0;

std::unique_ptr<simulator::Receiver> Make(const std::string& model) {
  return MakeReceiver({.model = model});
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

class Simulated : public EngineTest {
 protected:
  ~Simulated() override { line.SetStepHandler({}); }

  void Plug(const std::string& model, Options options = {}) {
    line.SetStepHandler({});
    CGPSReceiver::RecordLock()->Reset();
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
      Feed(bytes);
      all += bytes;
    }
    heard += all;
    return all;
  }
  /// What the program would show of what has come, then the bytes.
  std::string Shown() const {
    std::string shown;
    const auto sink = host::MakeSink(host::Format::json, shown, "", host::Geoid::none);
    gps::FixReader epochs;
    for (const CGPSData& record : window.records) sink->OnData(host::ReadRecord(epochs, record));
    return shown + heard;
  }
  void Forget() {
    window.records.clear();
    window.epochs.clear();
    window.ephemerides.clear();
    heard.clear();
  }
  void ExpectUnderstood() {
    EXPECT_EQ(simulated->TakeComplaints(), std::vector<std::string>());
    EXPECT_EQ(receiver->GetChecksumErrors() + receiver->GetBadBinaryMessages(), 0);
  }

  CRehearsal line;
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
  // What stands somewhere in what the program shows, and the sentences that go out from then on.
  const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
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
  for (const auto& [model, operations, shown, kinds] : rows) {
    SCOPED_TRACE(std::string(model) + ": " + operations);
    Plug(model);
    Do(*receiver, operations);
    Pass(8);
    EXPECT_EQ(Kinds(Pass(6)), kinds);
    EXPECT_NE(Shown().find(shown), std::string::npos);
    ExpectUnderstood();
  }
}

TEST_F(Simulated, ReceiverTellsTheTruthOfPlaceMotionAndClock) {
  for (const bool moving : {true, false}) {
    Options options;
    options.moving = moving;
    Plug("Ashtech", options);
    Do(*receiver, "post-processing on;raw-interval 0.5");
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
    EXPECT_FALSE(window.ephemerides.empty());
    ASSERT_EQ(window.epochs.size(), 180u);
    for (const CGPSDataRaw& epoch : window.epochs) {
      const auto truth = simulated->TruthAt({2314, epoch.m_dCorrectedTime});
      EXPECT_NEAR(epoch.m_dLatitude, simulator::Degrees(truth.geodetic.latitude), 1e-9);
      EXPECT_NEAR(epoch.m_dLongitude, simulator::Degrees(truth.geodetic.longitude), 1e-9);
      EXPECT_NEAR(epoch.m_dHeight, truth.geodetic.height, 1e-3);
      EXPECT_NEAR(epoch.m_dClockOffset, kLight * truth.clock_offset, 0.01);
      EXPECT_NEAR(epoch.m_dClockDrift, kLight * truth.clock_drift, 1e-5);
      EXPECT_TRUE(epoch.m_bEpochComplete) << "it has counted down";
    }
    Do(*receiver, "post-processing off");
    Forget();
    Pass(10);
    EXPECT_TRUE(window.epochs.empty() && window.ephemerides.empty());
  }
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

TEST(Simulator, ComplainsAboutWhatItsLanguageDoesNotKnow) {
  for (const std::string& model : Models()) {
    const auto receiver = Make(model);
    Ask(*receiver, "FOO\x01|$PASHX,1");
    EXPECT_EQ(receiver->TakeComplaints().size(), 2u) << model;
    EXPECT_EQ(receiver->TakeComplaints().size(), 0u) << model;
  }
  const std::tuple<const char*, const char*, const char*> rows[] = {
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
  for (const char c : "$PASHS,PEM,20\r\n\r\n$PASHS,PEM,21\n"s) receiver->Receive({&c, 1});
  EXPECT_EQ(receiver->Advance(0), "$PASHR,ACK*3D\r\n$PASHR,ACK*3D\r\n");
  receiver->Receive(std::string(5000, 'x'));  // never ends
  EXPECT_GE(receiver->TakeComplaints().size(), 1u);
}

// In real time, at the end of a pseudo-terminal.

TEST(PtyRunner, StopsAtOnceWhenNobodyReadsAndHasNoLineOnceItHasHungUp) {
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
  EXPECT_LT(Took([&] { runner.Stop(); }), 500u);
  runner.HangUp();
  EXPECT_FALSE(peer.Write("BAR\r\n"));
  runner.Start();  // has no line any more
  runner.Stop();
}

}  // namespace
