#include "gpsengine/face/words.h"
#include "gpsengine/rawdata/gpstime.h"
#include "host/decode.h"
#include "host/exports/rinexlog.h"
#include "simulator/simulator.h"
#include "tests/support/program.h"

using namespace host;

namespace {

Moment Day(int year, unsigned month, unsigned day) {
  return std::chrono::sys_days(std::chrono::year(year) / month / day);
}

/// An epoch with satellites 5 and 17, a satellite of another system and a measurement that is none.
CGPSDataRaw Epoch(int week, double seconds) {
  CGPSDataRaw epoch;
  epoch.m_Time = CTime(Day(2024, 5, 14).time_since_epoch() / std::chrono::seconds(1));
  epoch.m_nGPSWeek = week;
  epoch.m_dReceiverTime = seconds;
  epoch.m_bPositionValid = true;
  epoch.m_dLongitude = 90.0;
  epoch.m_dHeight = 102.0;
  epoch.m_nSatellites = 4;
  const int prns[] = {5, 33, 17, 9};
  for (int i = 0; i < 4; ++i)
    epoch.m_Satellites[i] = {prns[i], 44, 20'000'000.0625 + i, -105'000'000.5, 1234.5678, 0.0, 0.0, i != 3};
  epoch.m_Satellites[2].m_dCarrierPhase = 3e9;  // more than the format has room for
  return epoch;
}

class HostRinex : public testing::Test {
 protected:
  HostRinex() {
    log_.SetBase(folder_ / "run.1");
    log_.SetPivot(Day(2024, 5, 14));
    log_.SetLogInterval(1.0);
    log_.Enable(true);
  }
  /// What stands after the header, if there is one.
  static std::string Body(const std::string& path) {
    const std::string text = ReadFile(path), end = "END OF HEADER       \n";
    const auto start = text.find(end);
    return start == text.npos ? text : text.substr(start + end.size());
  }

  const TemporaryFolder folder_;
  CWinApp app_{"gpsengine-test"};
  RinexLog log_{RinexVersion::v2_11};
};

TEST(HostGpsTime, ResolvesTheTenBitWeekAroundEachRollOver) {
  const std::tuple<int, int, Moment> cases[] = {
      {1023, 1023, Day(1999, 8, 21)},  {0, 1024, Day(1999, 8, 21)},     {1023, 1023, Day(1999, 8, 22)},
      {1023, 2047, Day(2019, 4, 6)},   {0, 2048, Day(2019, 4, 6)},      {1, 2049, Day(2019, 4, 7)},
      {1023, 2047, Day(2019, 4, 7)},   {1023, 3071, Day(2038, 11, 20)}, {0, 3072, Day(2038, 11, 20)},
      {1023, 3071, Day(2038, 11, 21)}, {266, 2314, Day(2024, 5, 14)},   {2314, 2314, Day(1999, 1, 1)},
      {1000, 1000, Day(1980, 1, 6)},   {2314, 2314, Day(2045, 1, 1)},
  };
  for (const auto& [week, resolved, pivot] : cases) EXPECT_EQ(ResolveWeek(week, pivot), resolved) << week;
}

TEST(HostGpsTime, CountsAWeekFromWhereItWasTold) {
  const std::tuple<double, double, int> cases[] = {{10.0, 604790.0, 2314},
                                                   {604790.0, 10.0, 2312},
                                                   {10.0, 20.0, 2313},
                                                   {0.0, 302400.0, 2313},
                                                   {302400.0, 0.0, 2313}};
  for (const auto& [seconds, told_at, week] : cases) {
    const GpsTime time = Near(2313, seconds, told_at);
    EXPECT_EQ(time.week, week) << seconds;
    EXPECT_EQ(time.seconds, seconds);
  }
  EXPECT_EQ(MomentOf({2314, 180000.25}), Day(2024, 5, 14) + std::chrono::milliseconds(7'200'250));
}

TEST(HostGpsTime, CarriesRoundedSecondsOver) {
  const Calendar carried = CalendarOf({2313, 604799.99999999}, 7), other = CalendarOf({2313, 82859.25}, 2);
  EXPECT_EQ(gps::Print("%d/%d %d %g", carried.month, carried.day, carried.hour, carried.second), "5/12 0 0");
  EXPECT_EQ(gps::Print("%d:%02d %g", other.hour, other.minute, other.second), "23:00 59.25");
}

TEST_F(HostRinex, WritesAnEpochUnderACompleteHeader) {
  log_.SetAntennaHeight(2.0);
  RinexStation station;
  station.receiver = "Ashtech";
  log_.SetStation(station);
  ASSERT_TRUE(log_.Open());
  ASSERT_TRUE(log_.WriteEpoch(Epoch(266, 180000.1234567)));
  std::string text = ReadFile(folder_ / "run.obs");
  text.replace(text.find("gpsengine") + 40, 20, 20, '-');  // the present time
  EXPECT_EQ(text,
            "     2.11           OBSERVATION DATA    G (GPS)             RINEX VERSION / TYPE\n"
            "gpsengine                               --------------------PGM / RUN BY / DATE \n"
            "run.obs                                                     MARKER NAME         \n"
            "                                                            OBSERVER / AGENCY   \n"
            "                    Ashtech                                 REC # / TYPE / VERS \n"
            "                                                            ANT # / TYPE        \n"
            "        0.0000  6378237.0000        0.0000                  APPROX POSITION XYZ \n"
            "        2.0000        0.0000        0.0000                  ANTENNA: DELTA H/E/N\n"
            "     1     0                                                WAVELENGTH FACT L1/2\n"
            "     4    C1    L1    D1    S1                              # / TYPES OF OBSERV \n"
            "  2024     5    14     2     0    0.1234567     GPS         TIME OF FIRST OBS   \n"
            "                                                            END OF HEADER       \n"
            " 24  5 14  2  0  0.1234567  0  2G05G17\n"
            "  20000000.062  -105000000.500        1234.568          44.000  \n"
            "  20000002.062                        1234.568          44.000  \n");
}

TEST_F(HostRinex, LeavesOutWhatComesTooSoonAndWhatIsNoEpoch) {
  ASSERT_TRUE(log_.Open());
  EXPECT_TRUE(log_.IsEpochDue(Epoch(266, 10.0)));
  log_.WriteEpoch(Epoch(266, 10.0));
  EXPECT_FALSE(log_.IsEpochDue(Epoch(266, 10.5)));
  EXPECT_TRUE(log_.IsEpochDue(Epoch(266, 10.999))) << "the receiver has stepped its clock";
  EXPECT_FALSE(log_.WriteEpoch(Epoch(266, -1.0)));
  EXPECT_FALSE(log_.WriteEpoch(CGPSDataRaw()));
  EXPECT_EQ(log_.GetNumEpochs(), 1);
}

TEST_F(HostRinex, GoesOnIntoTheNextWeekAheadOfItsFirstEphemeris) {
  ASSERT_TRUE(log_.Open());
  log_.WriteEpoch(Epoch(266, 604799.0));
  EXPECT_TRUE(log_.IsEpochDue(Epoch(266, 0.0)));
  for (const auto& epoch : {Epoch(266, 0.0), Epoch(266, 1.0), Epoch(267, 2.0)}) log_.WriteEpoch(epoch);
  std::string times;
  for (const std::string& line : Split(Body(folder_ / "run.obs"), '\n'))
    if (line.starts_with(" 24")) times += line.substr(0, 18) + ';';
  EXPECT_EQ(times, " 24  5 18 23 59 59; 24  5 19  0  0  0; 24  5 19  0  0  1; 24  5 19  0  0  2;");
}

TEST_F(HostRinex, WritesAnEphemerisOnceAndInRadians) {
  CGPSDataEphemeris e;
  e.m_nPRN = 5;
  e.m_nWeek = 266;
  e.m_lTow = 604790;
  e.m_lToc = e.m_lToe = 7200;  // of the week that is about to begin
  e.m_lAodc = 21;
  e.m_lAode = 20;
  e.m_dAf0 = -1.25e-4;
  e.m_dM0 = 0.5;
  e.m_dSqrtA = 5153.5;
  e.m_dIDot = -1e-10;
  e.m_dCrs = 32.0;
  e.m_dTgd = 4e-9;
  ASSERT_TRUE(log_.Open());
  EXPECT_TRUE(log_.WriteEphemeris(e));
  EXPECT_TRUE(log_.WriteEphemeris(e));
  e.m_nPRN = 40;
  EXPECT_FALSE(log_.WriteEphemeris(e));
  EXPECT_EQ(log_.GetNumEphemerides(), 1);
  const std::string body = Body(folder_ / "run.nav");
  EXPECT_TRUE(body.starts_with(" 5 24  5 19  2  0  0.0-1.250000000000D-04")) << body;
  EXPECT_TRUE(Has(body, "\n   -3.141592653590D-10 0.000000000000D+00 2.315000000000D+03 "));
  EXPECT_TRUE(
      Has(body, " 4.000000000000D-09 2.100000000000D+01\n   -1.000000000000D+01 0.000000000000D+00\n"));
}

rawdata::SignalObservation Signal(char system, int satellite, const char* code, double cn0) {
  const double range = 2e7 + satellite, phase = 1e8 + satellite, doppler = -1000.0 - satellite;
  return {system, satellite, {code[0], code[1]}, range, phase, doppler, cn0, false, false, {}};
}

constexpr RinexKind kManySignals{.in_decibels = true, .systems = 7, .more_than_l1_ca = true};

TEST_F(HostRinex, WritesTheStateThatComesWithAnEphemeris) {
  const std::tuple<bool, int, const char*> fits[] = {
      {false, 240, "4"}, {true, 21, "6"}, {true, 247, "8"}, {true, 496, "1.4"}, {true, 1023, "2.6"}};
  for (const auto& [is_long, issue, hours] : fits) {
    rawdata::BroadcastEphemeris told;
    told.orbit.m_nPRN = 5;
    told.orbit.m_nWeek = 266;
    told.orbit.m_lTow = told.orbit.m_lToe = told.orbit.m_lToc = 7200;
    told.orbit.m_lAodc = issue;
    told.accuracy = 2.4;
    told.health = 63;
    told.codes_on_l2 = 1;
    told.l2p_without_data = true;
    told.long_fit = is_long;
    RinexLog log;
    log.SetBase(folder_ / "state");
    log.Enable(true);
    ASSERT_TRUE(log.Open());
    // The week is that of the first epoch, which comes later.
    EXPECT_TRUE(log.WriteEphemeris(told));
    EXPECT_EQ(log.GetNumEphemerides(), 0);
    log.WriteEpoch({2314, 7200.0, {Signal('G', 5, "1C", 0.0)}}, kManySignals);
    EXPECT_EQ(log.GetNumEphemerides(), 1);
    const std::string body = Body(log.NavigationPath());
    EXPECT_TRUE(body.starts_with("G05 2024 05 12 02 00 00 0.00")) << body;
    EXPECT_TRUE(Has(body,
                    "\n     0.000000000000D+00 1.000000000000D+00 2.314000000000D+03 1.000000000000D+00\n"
                    "     2.400000000000D+00 6.300000000000D+01"));
    EXPECT_EQ(body.substr(body.rfind("D+03 ") + 5, std::strlen(hours)), hours) << body;
  }
}

// What shows up later is declared in the room that the header has kept, and what was written stays as it is.
TEST_F(HostRinex, DeclaresSignalsAsTheyComeInAHeaderOfOneLength) {
  RinexLog log;
  log.SetBase(folder_ / "wide");
  log.SetLogInterval(1.0);
  log.Enable(true);
  ASSERT_TRUE(log.Open());
  rawdata::ObservationEpoch epoch{2314, 180000.0, {Signal('G', 5, "1C", 48.5), Signal('G', 17, "1C", 5.0)}};
  epoch.signals[0].slip = true;
  epoch.signals[1].slip = epoch.signals[1].half_cycle = true;
  ASSERT_TRUE(log.WriteEpoch(epoch, kManySignals));
  const std::string path = log.ObservationPath(), first = ReadFile(path);
  EXPECT_TRUE(Has(first, "OBSERVATION DATA    G (GPS)", "\nG    4 C1C L1C D1C S1C  "));

  log.SetPlace(0.0, 90.0, 100.0);
  epoch = {
      2314, 180001.0, {Signal('R', 9, "1C", 60.0), Signal('G', 5, "1C", 48.5), Signal('G', 5, "2W", 0.0)}};
  epoch.signals[0].glonass_channel = -2;
  ASSERT_TRUE(log.WriteEpoch(epoch, kManySignals));
  const std::string both = ReadFile(path);
  EXPECT_EQ(both.find("END OF HEADER"), first.find("END OF HEADER"));
  EXPECT_TRUE(Has(both, "OBSERVATION DATA    M (MIXED)", "\nG    8 C1C L1C D1C S1C C2W L2W D2W S2W  ",
                  "\nR    4 C1C L1C D1C S1C  ", "\n        0.0000  6378237.0000        0.0000  ",
                  "\n  1 R09 -2     ", "\nDBHZ "));
  EXPECT_EQ(
      Body(path),
      "> 2024 05 14 02 00  0.0000000  0  2\n"
      "G05  20000005.000 8 100000005.00018     -1005.000          48.500\n"
      "G17  20000017.000 1 100000017.00031     -1017.000           5.000\n"
      "> 2024 05 14 02 00  1.0000000  0  2\n"
      "G05  20000005.000 8 100000005.000 8     -1005.000          48.500    20000005.000   100000005.000  "
      "     -1005.000\n"
      "R09  20000009.000 9 100000009.000 9     -1009.000          60.000\n");
}

// Lines of five observations and of twelve satellites; what the version has no name for stays out.
TEST_F(HostRinex, WritesManySignalsInTheColumnsOfTheOldVersion) {
  ASSERT_TRUE(log_.Open());
  rawdata::ObservationEpoch epoch{2314, 180000.0, {Signal('G', 3, "2W", 30.0), Signal('C', 6, "2I", 40.0)}};
  for (int prn = 1; prn <= 13; ++prn) epoch.signals.push_back(Signal('G', prn, "1C", 0.0));
  epoch.signals.push_back(Signal('E', 2, "1B", 0.0));
  ASSERT_TRUE(log_.WriteEpoch(epoch, kManySignals));
  const std::string text = ReadFile(folder_ / "run.obs"), body = Body(folder_ / "run.obs");
  EXPECT_TRUE(Has(text,
                  "\n    12    C1    L1    D1    S1    P2    L2    D2    S2    C5# / TYPES OF OBSERV \n"
                  "          L5    D5    S5  "));
  EXPECT_TRUE(body.starts_with(" 24  5 14  2  0  0.0000000  0 14G01G02G03G04G05G06G07G08G09G10G11G12\n" +
                               std::string(32, ' ') + "G13E02\n"));
  EXPECT_EQ(std::count(body.begin(), body.end(), '\n'), 2 + 3 * 14);
  EXPECT_TRUE(Has(body,
                  "\n  20000003.000   100000003.000       -1003.000                    20000003.000 5\n"
                  " 100000003.000 5     -1003.000          30.000  "));
}

// Two logs have the same epochs wherever they begin, and a slip in between belongs to the next one.
TEST_F(HostRinex, ThinsToWholeIntervalsAndKeepsTheirSlips) {
  log_.SetLogInterval(5.0);
  ASSERT_TRUE(log_.Open());
  std::string logged, lost;
  for (int second = 3; second < 20; ++second) {
    rawdata::ObservationEpoch epoch{2314, second - 0.001, {Signal('G', 5, "1C", 0.0)}};
    epoch.signals[0].slip = second == 7;
    log_.IsEpochDue(epoch) ? (void)log_.WriteEpoch(epoch, RinexKind()) : log_.SkipEpoch(epoch);
  }
  for (const std::string& line : Split(Body(folder_ / "run.obs"), '\n')) {
    if (line.starts_with(" 24")) logged += line.substr(16, 6) + ';';
    if (line.starts_with("  2")) lost += line[30];
  }
  EXPECT_EQ(logged, " 2.999; 4.999; 9.999;14.999;");
  EXPECT_EQ(lost, "  1 ");
}

// A disk that is full, as a limit on the size of files makes it, leaves whole epochs.
TEST_F(HostRinex, LeavesWholeEpochsOnAFullDisk) {
  ASSERT_TRUE(log_.Open());
  log_.WriteEpoch(Epoch(266, 0.0));
  const std::string whole = ReadFile(folder_ / "run.obs");
  {
    const SmallDisk disk(whole.size() + 20);
    EXPECT_FALSE(log_.WriteEpoch(Epoch(266, 1.0)));
  }
  EXPECT_TRUE(log_.IsBroken());
  EXPECT_NE(log_.GetLastErrorString().Find("run.obs"), -1);
  EXPECT_EQ(ReadFile(folder_ / "run.obs"), whole);
}

TEST_F(HostRinex, LeavesNoFileWithNothingInIt) {
  ASSERT_TRUE(log_.Open());
  log_.Close();
  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
  log_.SetBase(folder_.Path());
  ASSERT_TRUE(log_.Open());
  log_.WriteEpoch(Epoch(266, 0.0));
  EXPECT_TRUE(log_.ObservationPath().starts_with(folder_ / "gpsengine_")) << "with the date after it";
  log_.Close();
  EXPECT_FALSE(std::filesystem::is_empty(folder_.Path()));
  log_.SetBase(folder_ / "missing/run");
  EXPECT_FALSE(log_.Open());
  EXPECT_TRUE(log_.IsBroken());
}

struct RawModel {
  const char* name;
  const char* raw_on;  // what it is told
};
constexpr RawModel kRawModels[] = {
    {"Ashtech",
     "$PASHS,NME,ALL,A,OFF\r\n$PASHS,NME,GGA,A,ON\r\n"
     "$PASHS,RAW,MBN,A,ON\r\n$PASHS,RAW,PBN,A,ON\r\n$PASHS,RAW,SNV,A,ON\r\n"},
    {"CSI - MAX", "$JBIN,96,1\r\n$JBIN,95,0.2\r\n"},
    {"GSR2650 LB", "LOG RANGEB ONTIME 1\r\nLOG RAWEPHEMB ONCHANGED\r\n"},
};

/// Decodes what a simulated receiver sends in a minute to a log of that name, with the program's own means.
void Log(const std::string& base, const RawModel& model, simulator::Receiver& receiver,
         RinexVersion version) {
  DecodeOptions decode;
  decode.model = model.name;
  decode.files = {base + ".log"};
  decode.format = Format::none;
  decode.rinex.base = base;
  decode.rinex.version = version;
  decode.date = Day(2024, 5, 1);
  receiver.Receive(model.raw_on);
  WriteFile(decode.files[0], receiver.Advance(60.0));
  const UniqueDescriptor nowhere(open("/dev/null", O_WRONLY));
  Output output(nowhere.Get());
  ASSERT_EQ(Decode(decode, Interrupt(), output), ExitCode::done);
}

/// What a program that no one here wrote makes of the files: how many positions, and how many metres off the
/// worst of the last `count` is. It ends well on bad input too, so that is what counts.
std::pair<std::size_t, double> PostProcessed(const std::string& folder, const std::string& arguments,
                                             const simulator::Receiver& receiver, std::size_t count) {
  const std::string command = "cd " + folder + " && rnx2rtkp " + arguments + " -o out.pos 2>/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::vector<double> errors;
  for (const std::string& line : Split(ReadFile(folder + "/out.pos"), '\n')) {
    if (line.starts_with('%')) continue;
    simulator::GpsTime time;
    simulator::Geodetic found;
    std::istringstream(line) >> time.week >> time.seconds >> found.latitude >> found.longitude >>
        found.height;
    found.latitude = simulator::Radians(found.latitude);
    found.longitude = simulator::Radians(found.longitude);
    errors.push_back(simulator::Length(simulator::ToVector(found) - receiver.TruthAt(time).position));
  }
  if (errors.empty()) return {0, 0.0};
  const auto last = errors.end() - static_cast<std::ptrdiff_t>(std::min(count, errors.size()));
  return {errors.size(), *std::max_element(last, errors.end())};
}

constexpr RinexVersion kVersions[] = {RinexVersion::v2_11, RinexVersion::v3_04};
constexpr std::size_t kLeastPositions = 55;  // of a minute

TEST_F(HostRinex, IsReadByAPostProcessorThatFindsTheAntenna) {
  if (!HasTool("rnx2rtkp")) GTEST_SKIP() << "rnx2rtkp, of the package rtklib, is missing";
  constexpr const char kAlone[] = "-p 0 -m 15 -sys G rover.obs rover.nav";
  // By one that rests half a kilometre away: the phases too, but for the first seconds until the cycles are
  // known.
  constexpr const char kByAnother[] = "-p 2 -f 1 -m 15 -sys G -l 47.625 9.4 445 rover.obs base.obs rover.nav";
  // At rest, moving, and over the moment at which new ephemerides come into force: a whole multiple of two
  // hours of the week.
  const std::tuple<bool, int, const char*, std::size_t> runs[] = {
      {false, 0, kAlone, kLeastPositions},
      {true, 0, kAlone, kLeastPositions},
      {true, 7200 - 201618 % 7200 - 30, kAlone, kLeastPositions},
      {true, 0, kByAnother, 40}};
  for (const RawModel& model : kRawModels) {
    for (std::size_t i = 0; i < 2 * std::size(runs); ++i) {
      const auto& [moving, later, arguments, good] = runs[i / 2];
      simulator::Options options;
      options.model = model.name;
      options.moving = moving;
      options.start_utc += std::chrono::seconds(later);
      const auto rover = simulator::MakeReceiver(options);
      options.moving = false;
      options.latitude += 0.005;
      Log(folder_ / "rover", model, *rover, kVersions[i % 2]);
      if (arguments == kByAnother)
        Log(folder_ / "base", model, *simulator::MakeReceiver(options), kVersions[i % 2]);
      const auto [positions, worst] = PostProcessed(folder_.Path(), arguments, *rover, good);
      EXPECT_GE(positions, kLeastPositions) << model.name;
      EXPECT_LT(worst, 0.05) << "metres, " << model.name;
    }
  }
}

// Of the models whose blocks a program that no one here wrote reads too.
TEST_F(HostRinex, SaysWhatAConverterMakesOfTheSameBytes) {
  if (!HasTool("convbin") || !HasTool("python3")) GTEST_SKIP() << "rtklib's convbin or python3 is missing";
  constexpr const char* kFormats[] = {"", "hemis", "nov"};  // of kRawModels
  for (const std::size_t i : {1, 2}) {
    const auto receiver = simulator::MakeReceiver({.model = kRawModels[i].name});
    for (const RinexVersion version : kVersions) {
      Log(folder_ / "ours", kRawModels[i], *receiver, version);
      const std::string command =
          "cd " + (folder_ / "") + " && convbin -r " + kFormats[i] +
          " ours.log -tr 2024/5/1 12:0:0 -od -os -v " + (version == RinexVersion::v2_11 ? "2.11" : "3.04") +
          " -o theirs.obs -n theirs.nav 2>/dev/null && for kind in obs nav; do " GPSENGINE_SOURCE
          "/tools/compare-rinex ours.$kind theirs.$kind >$kind.txt || exit 1; done";
      EXPECT_EQ(std::system(command.c_str()), 0) << kRawModels[i].name;
    }
  }
}

TEST_F(HostRinex, AndExportsAreTheSameWhicheverCommandWritesThem) {
  const auto receiver = simulator::MakeReceiver({.model = "CSI - MAX"});
  const std::string recording = folder_ / "drive";
  receiver->Receive(kRawModels[1].raw_on);
  WriteFile(recording, receiver->Advance(60.0));
  const std::vector<std::string> files = {"obs", "nav", "gpx", "kml", "csv", "nmea", "pos", "geojson"};
  const auto run = [&](std::vector<std::string> arguments, const std::string& base) {
    arguments.insert(arguments.end(), {"--model", "CSI - MAX", "--crs", "utm", "--rinex", base});
    for (std::size_t i = 2; i < files.size(); ++i)
      arguments.insert(arguments.end(), {"--" + files[i], base + "." + files[i]});
    Program program(arguments);
    EXPECT_EQ(program.Wait(), 0) << program.Errors();
  };
  run({"decode", recording, "--format", "none"}, folder_ / "decode");
  run({"monitor", "--play", recording, "--speed", "max", "--format", "none"}, folder_ / "monitor");
  run({"serve", "--play", recording, "--speed", "max", "--tcp", "0"}, folder_ / "serve");
  for (const auto& file : files) {
    const std::string body = Body(folder_ / "decode." + file);
    EXPECT_GT(body.size(), 1000u) << file;
    for (const char* command : {"monitor.", "serve."}) EXPECT_EQ(Body(folder_ / command + file), body);
  }
}

}  // namespace
