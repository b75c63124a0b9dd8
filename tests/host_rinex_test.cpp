#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "gpsengine/platform/application.h"
#include "host/decode.h"
#include "host/exports/rinexlog.h"
#include "host/records/gpstime.h"
#include "simulator/simulator.h"

using namespace host;

namespace {

Moment Day(int year, unsigned month, unsigned day) {
  const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                         std::chrono::day(day)};
  return std::chrono::sys_days(date).time_since_epoch().count() * kDay;
}

/// An epoch with satellites 5 and 17, a satellite of another system and a measurement that is none.
CGPSDataRaw Epoch(int week, double seconds) {
  CGPSDataRaw epoch;
  epoch.m_Time = CTime(Day(2024, 5, 14) / 1000);
  epoch.m_nGPSWeek = week;
  epoch.m_dReceiverTime = seconds;
  epoch.m_bPositionValid = true;
  epoch.m_dLongitude = 90.0;
  epoch.m_dHeight = 102.0;
  epoch.m_nSatellites = 4;
  const int prns[] = {5, 40, 17, 9};
  for (int i = 0; i < 4; ++i) {
    epoch.m_Satellites[i].m_nPRN = prns[i];
    epoch.m_Satellites[i].m_dPseudorange = 20'000'000.0625 + i;
    epoch.m_Satellites[i].m_dCarrierPhase = -105'000'000.5;
    epoch.m_Satellites[i].m_dDoppler = 1234.5678;
    epoch.m_Satellites[i].m_nSignalCount = 44;
    epoch.m_Satellites[i].m_bValid = i != 3;
  }
  epoch.m_Satellites[2].m_dCarrierPhase = 3e9;  // more than the format has room for
  return epoch;
}

class HostRinex : public testing::Test {
 protected:
  HostRinex() : folder_(testing::TempDir() + "host_rinex_" + std::to_string(getpid()) + ".d") {
    std::filesystem::create_directory(folder_);
    log_.SetBase(folder_ + "/run.1");
    log_.SetPivot(Day(2024, 5, 14));
    log_.SetLogInterval(1.0);
    log_.Enable(true);
  }
  ~HostRinex() override { std::filesystem::remove_all(folder_); }

  static std::string Read(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }
  /// What stands behind the header.
  static std::string Body(const std::string& path) {
    const std::string text = Read(path);
    const std::string end = "END OF HEADER       \n";
    return text.substr(text.find(end) + end.size());
  }

  const std::string folder_;
  CWinApp app_{"gpsengine-test"};
  RinexLog log_;
};

}  // namespace

TEST(HostGpsTime, ResolvesTheTenBitWeekAroundEachRollOver) {
  const struct {
    int week, resolved;
    Moment pivot;
  } cases[] = {
      {1023, 1023, Day(1999, 8, 21)},  {0, 1024, Day(1999, 8, 21)},     {1023, 1023, Day(1999, 8, 22)},
      {1023, 2047, Day(2019, 4, 6)},   {0, 2048, Day(2019, 4, 6)},      {1, 2049, Day(2019, 4, 7)},
      {1023, 2047, Day(2019, 4, 7)},   {1023, 3071, Day(2038, 11, 20)}, {0, 3072, Day(2038, 11, 20)},
      {1023, 3071, Day(2038, 11, 21)}, {266, 2314, Day(2024, 5, 14)},   {2314, 2314, Day(1999, 1, 1)},
      {1000, 1000, Day(1980, 1, 6)},
  };
  for (const auto& [week, resolved, pivot] : cases) EXPECT_EQ(ResolveWeek(week, pivot), resolved) << week;
}

TEST(HostGpsTime, CarriesRoundedSecondsOver) {
  const Calendar c = CalendarOf({2313, 604799.99999999}, 7);
  EXPECT_EQ(c.month * 100 + c.day, 512);
  EXPECT_EQ(c.hour, 0);
  EXPECT_EQ(c.second, 0.0);
}

TEST_F(HostRinex, WritesAnEpochUnderACompleteHeader) {
  log_.SetAntennaHeight(2.0);
  log_.SetReceiver("Ashtech");
  ASSERT_TRUE(log_.Open());
  ASSERT_TRUE(log_.WriteEpoch(Epoch(266, 180000.1234567)));
  std::string text = Read(folder_ + "/run.obs");
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
  std::istringstream body(Body(folder_ + "/run.obs"));
  for (std::string line; std::getline(body, line);) {
    if (line.starts_with(" 24")) times += line.substr(0, 18) + ';';
  }
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
  const std::string z = " 0.000000000000D+00";
  EXPECT_EQ(Body(folder_ + "/run.nav"),
            " 5 24  5 19  2  0  0.0-1.250000000000D-04" + z + z + "\n" +                     //
                "    2.000000000000D+01 3.200000000000D+01" + z + " 1.570796326795D+00\n" +  //
                "   " + z + z + z + " 5.153500000000D+03\n" +                                //
                "    7.200000000000D+03" + z + z + z + "\n" +                                //
                "   " + z + z + z + z + "\n" +                                               //
                "   -3.141592653590D-10" + z + " 2.315000000000D+03" + z + "\n" +            //
                "   " + z + z + " 4.000000000000D-09 2.100000000000D+01\n" +                 //
                "   -1.000000000000D+01" + z + "\n");
}

TEST_F(HostRinex, LeavesNoFileWithNothingInIt) {
  ASSERT_TRUE(log_.Open());
  log_.Close();
  EXPECT_TRUE(std::filesystem::is_empty(folder_));
  log_.SetBase(folder_);
  ASSERT_TRUE(log_.Open());
  log_.WriteEpoch(Epoch(266, 0.0));
  EXPECT_TRUE(log_.ObservationPath().starts_with(folder_ + "/gpsengine_")) << "with the date behind it";
  log_.Close();
  EXPECT_FALSE(std::filesystem::is_empty(folder_));
  log_.SetBase(folder_ + "/missing/run");
  EXPECT_FALSE(log_.Open());
  EXPECT_TRUE(log_.IsBroken());
}

namespace {

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

/// A minute of raw data of a simulated receiver, as it comes over the line.
std::string RawMinute(simulator::Receiver& receiver, const RawModel& model) {
  receiver.Receive(model.raw_on);
  std::string bytes;
  for (int i = 0; i < 60; ++i) bytes += receiver.Advance(1.0);
  return bytes;
}

}  // namespace

/// What a program that no one here wrote makes of the two files: how many positions, and how many metres off
/// the worst is. It ends well on bad input too, so that is what counts.
std::pair<int, double> PostProcessed(const std::string& folder, const simulator::Receiver& receiver) {
  const std::string command =
      "cd " + folder + " && rnx2rtkp -p 0 -m 15 -sys G -o out.pos raw.obs raw.nav 2>/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::ifstream solution(folder + "/out.pos");
  std::pair<int, double> result{0, 0.0};
  for (std::string line; std::getline(solution, line);) {
    if (line.starts_with('%')) continue;
    simulator::GpsTime time;
    simulator::Geodetic found;
    std::istringstream(line) >> time.week >> time.seconds >> found.latitude >> found.longitude >>
        found.height;
    found.latitude = simulator::Radians(found.latitude);
    found.longitude = simulator::Radians(found.longitude);
    ++result.first;
    result.second = std::max(result.second,
                             simulator::Length(simulator::ToVector(found) - receiver.TruthAt(time).position));
  }
  return result;
}

TEST_F(HostRinex, IsReadByAPostProcessorThatFindsTheAntenna) {
  if (std::system("command -v rnx2rtkp >/dev/null") != 0)
    GTEST_SKIP() << "rnx2rtkp, of the package rtklib, is missing";
  // At rest, moving, and over the moment at which new ephemerides come into force: a whole multiple of two
  // hours of the week.
  const std::pair<bool, int> runs[] = {{false, 0}, {true, 0}, {true, 7200 - 201618 % 7200 - 30}};
  for (const RawModel& model : kRawModels) {
    for (const auto& [moving, later] : runs) {
      simulator::Options options;
      options.model = model.name;
      options.moving = moving;
      options.start_utc += std::chrono::seconds(later);
      const auto receiver = simulator::MakeReceiver(options);
      DecodeOptions decode;
      decode.model = model.name;
      decode.files = {folder_ + "/raw.log"};
      decode.format = Format::none;
      decode.rinex.base = folder_ + "/raw";
      decode.date = Day(2024, 5, 1);
      std::ofstream(decode.files[0], std::ios::binary) << RawMinute(*receiver, model);
      Output output(open("/dev/null", O_WRONLY));
      ASSERT_EQ(Decode(decode, Interrupt(), output), ExitCode::done);
      const auto [positions, worst] = PostProcessed(folder_, *receiver);
      EXPECT_GE(positions, 55) << model.name;
      EXPECT_LT(worst, 0.05) << "metres, " << model.name;
      close(output.Descriptor());
    }
  }
}
