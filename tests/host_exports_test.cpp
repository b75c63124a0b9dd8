#include <map>

#include "host/decode.h"
#include "simulator/simulator.h"
#include "tests/support/complaints.h"
#include "tests/support/program.h"
#include "tests/support/receivertest.h"

using namespace host;

namespace {

/// A table's cells by its header's names, row for row.
std::vector<std::map<std::string, std::string>> Table(const std::string& text) {
  const auto lines = Split(text, '\n');
  std::vector<std::map<std::string, std::string>> rows(lines.size() - 1);
  const auto cells = [&](std::size_t i) { return Split(lines[i].substr(0, lines[i].find('\r')), ','); };
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const auto names = cells(0), values = cells(i);
    for (std::size_t k = 0; k < names.size(); ++k) rows[i - 1][names[k]] = k < values.size() ? values[k] : "";
  }
  return rows;
}

class HostExports : public testing::Test {
 protected:
  HostExports() {
    CGPSReceiver::RecordLock()->Reset();
    options_.files = {folder_ / "a<b>&\"\x01\xFF.log"};
    options_.format = Format::none;
    options_.exports = {Path("gpx"), Path("kml"),     Path("csv"), Path("nmea"),
                        Path("pos"), Path("geojson"), "",          {}};
  }

  std::string Path(const std::string& extension) const { return folder_ / ("out." + extension); }
  std::string Export(const std::string& extension) const { return ReadFile(Path(extension)); }
  void Decode(const std::string& bytes) {
    WriteFile(options_.files[0], bytes);
    Decode();
  }
  void Decode() {
    const UniqueDescriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
    Output output(nowhere.Get());
    EXPECT_EQ(host::Decode(options_, interrupt_, output), ExitCode::done);
  }
  void ExpectWellFormed() const {
    const std::string parse =
        "python3 -c 'import sys, xml.dom.minidom as dom; [*map(dom.parse, sys.argv[1:])]' ";
    EXPECT_EQ(std::system((parse + Path("gpx") + ' ' + Path("kml")).c_str()), 0);
  }

  CWinApp app_{"gpsengine-test"};
  Interrupt interrupt_;
  const TemporaryFolder folder_;
  DecodeOptions options_;
};

const std::string kDate = WithChecksum("$GPZDA,235958,31,12,2023,00,00");

}  // namespace

TEST_F(HostExports, WritesWholeFilesOfNothing) {
  Decode(WithChecksum("$GPGSV,1,1,01,07,45,180,41"));
  ExpectWellFormed();
  EXPECT_EQ(Count(Export("csv"), "\n"), 1);
  EXPECT_EQ(Export("nmea"), "");
  EXPECT_EQ(Export("geojson"),
            "{\"type\":\"FeatureCollection\",\"name\":\"a<b>&\\\"\\u0001\xEF\xBF\xBD.log\","
            "\"features\":[\n]}\n");
}

TEST_F(HostExports, JoinsTheSentencesOfAnEpochAndSplitsATrackAtAGap) {
  Decode(kDate + GgaAt("235959") +
         WithChecksum("$INGGA,235959,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,") + GgaAt("000000.50") +
         GgaAt("000001", 0) + GgaAt("000002") + GgaAt("000100") + GgaAt("000101", 1, "9907.038") +
         WithChecksum("$GPGGA,000102,4807.038,N,01131.000,E,1,08,0.9,1e9,M,46.9,M,,") + GgaAt("000059") +
         GgaAt("000104") + GgaAt("000124") + GgaAt("000245"));
  ExpectWellFormed();
  const auto rows = Table(Export("csv"));
  ASSERT_EQ(rows.size(), 8u);
  const char* times[] = {"2023-12-31T23:59:59.000Z", "2024-01-01T00:00:00.500Z", "2024-01-01T00:00:02.000Z",
                         "2024-01-01T00:01:00.000Z", "2024-01-01T00:00:59.000Z", "2024-01-01T00:01:04.000Z",
                         "2024-01-01T00:01:24.000Z", "2024-01-01T00:02:45.000Z"};
  const char* segments[] = {"1", "1", "2", "3", "4", "4", "4", "5"};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].at("time"), times[i]);
    EXPECT_EQ(rows[i].at("segment"), segments[i]);
  }
  EXPECT_EQ(rows[0].at("lat") + ' ' + rows[0].at("lon") + ' ' + rows[0].at("height_msl_m") + ' ' +
                rows[0].at("hdop"),
            "48.117300000 11.516666667 545.400 0.90");
  for (const char* extension : {"gpx", "kml"}) {
    EXPECT_EQ(Count(Export(extension), "2023-12-31T23:59:59.000Z"), 1);
    EXPECT_EQ(Count(Export(extension), extension[0] == 'g' ? "<trkseg>" : "<Placemark>"), 5);
  }
  EXPECT_TRUE(Has(Export("gpx"), "<name>a&lt;b&gt;&amp;&quot;\xEF\xBF\xBD\xEF\xBF\xBD.log</name>"));
}

// The places are those of "cs2cs EPSG:4326", by whoever wrote the tables.
TEST_F(HostExports, TellsEastingsAndNorthingsInMetres) {
  if (Projection::Version() == "without PROJ") GTEST_SKIP() << "PROJ is missing";
  const std::tuple<const char*, double, double, const char*> rows[] = {
      {"utm", 687'299.575, 5'332'401.246, "EPSG:32632"},
      {"EPSG:25832", 687'299.575, 5'332'401.245, "EPSG:25832"},
      {"EPSG:3035", 4'433'972.399, 2'779'353.199, "EPSG:3035"},  // northing first
      {"EPSG:2263", 18'859'192.593 * 1200 / 3937, 12'396'973.520 * 1200 / 3937, "EPSG:2263"}};
  for (const auto& [code, easting, northing, name] : rows) {
    options_.display.projection = std::make_shared<Projection>(code);
    Decode(kDate + GgaAt("235959"));
    const auto table = Table(Export("csv"));
    ASSERT_EQ(table.size(), 1u);
    EXPECT_NEAR(std::stod(table[0].at("easting_m")), easting, 0.002) << code;
    EXPECT_NEAR(std::stod(table[0].at("northing_m")), northing, 0.002) << code;
    EXPECT_EQ(options_.display.projection->Name(), name);
  }
  options_.exports.report = Path("html");
  options_.display.projection = std::make_shared<Projection>("utm");
  Decode(kDate + WithChecksum("$GPGGA,000001,4807.038,N,01159.999,E,1,08,0.9,545.4,M,46.9,M,,") +
         WithChecksum("$GPGGA,000002,4807.038,N,01200.002,E,1,08,0.9,545.4,M,46.9,M,,"));
  EXPECT_TRUE(Has(Export("html"), "<th>Mean easting, EPSG:32632</th>"))
      << "the zone is that of the first fix";
  Projection zones("utm");
  EXPECT_NEAR(zones.Of(60.0, 4.0)->easting, 221'288.770, 0.001) << "the zone is wider at Norway";
}

TEST_F(HostExports, MakesNmeaOfWhatAReceiverSaid) {
  Decode(WithChecksum("$GPRMC,123518,A,4807.038,N,01131.000,E,022.4,084.4,230394,,") +
         WithChecksum("$GPGSA,A,3,07,,,,,,,,,,,,2.5,1.3,2.1") + WithChecksum("$GPGSV,1,1,01,07,45,180,41") +
         WithChecksum("$GPVTG,084.4,T,,M,022.4,N,041.5,K") + GgaAt("123519", 4, "4807.0381234") +
         GgaAt("123520", 0));
  EXPECT_EQ(Export("nmea"),
            WithChecksum("$GPGGA,123519.000,4807.0381234,N,01131.0000000,E,4,08,0.90,545.400,M,46.900,M,,") +
                WithChecksum("$GPRMC,123519.000,A,4807.0381234,N,01131.0000000,E,22.408,84.40,230394,,,R") +
                WithChecksum("$GPGSA,A,3,07,,,,,,,,,,,,2.50,0.90,2.10") +
                WithChecksum("$GPGSV,1,1,01,07,45,180,41") +
                WithChecksum("$GPGGA,123520.000,,,,,0,08,0.90,,M,,M,,") +
                WithChecksum("$GPRMC,123520.000,V,,,,,,,230394,,,N") +
                WithChecksum("$GPGSA,A,1,07,,,,,,,,,,,,2.50,0.90,2.10") +
                WithChecksum("$GPGSV,1,1,01,07,45,180,41"));
}

TEST_F(HostExports, TellOfSatellitesOfEverySystem) {
  const auto epoch = [](const std::string& time) {
    return WithChecksum("$GNGGA," + time + ",4807.038,N,01131.000,E,1,12,0.9,545.4,M,46.9,M,,") +
           WithChecksum("$GNGSA,A,3,01,02,03,04,05,06,07,08,09,10,11,12,2.5,1.3,2.1,1") +
           WithChecksum("$GNGSA,A,3,13,,,,,,,,,,,,2.5,1.3,2.1,1") +
           WithChecksum("$GNGSA,A,3,33,,,,,,,,,,,,2.5,1.3,2.1,3") +
           WithChecksum("$GPGSV,4,1,13,01,10,020,30,02,10,020,30,03,10,020,30,04,10,020,30,1") +
           WithChecksum("$GPGSV,4,2,13,05,10,020,30,06,10,020,30,07,10,020,30,08,10,020,30,1") +
           WithChecksum("$GPGSV,4,3,13,09,10,020,30,10,10,020,30,11,10,020,30,12,10,020,30,1") +
           WithChecksum("$GPGSV,4,4,13,13,10,020,30,1") +
           WithChecksum("$GAGSV,1,1,02,33,05,010,44,08,-3,,20,7");
  };
  Decode(kDate + epoch("000000") + epoch("000001"));
  const auto row = Table(Export("csv")).back();
  EXPECT_EQ(row.at("used") + ' ' + row.at("in_view") + ' ' + row.at("mean_snr"), "14 15 31.0");
  const std::string dilution = "2.50,0.90,2.10,";
  for (const std::string& sentence :
       {"$GNGSA,A,3,01,02,03,04,05,06,07,08,09,10,11,12," + dilution + "1",
        "$GNGSA,A,3,13,,,,,,,,,,,," + dilution + "1", "$GNGSA,A,3,33,,,,,,,,,,,," + dilution + "3",
        std::string("$GPGSV,4,4,13,13,10,020,30"), std::string("$GAGSV,1,1,02,08,-3,,20,33,05,010,44")}) {
    EXPECT_EQ(Count(Export("nmea"), WithChecksum(sentence)), 1) << sentence;
  }
}

TEST_F(HostExports, TellHeightsForWhatTheyAre) {
  const auto gga = [](const std::string& time, const std::string& tail) {
    return WithChecksum("$GPGGA," + time + ",4807.038,N,01131.000,E,2,08,0.9,545.4,M," + tail);
  };
  // The last two are of a position without a separation.
  const std::tuple<Geoid, const char*, const char*, const char*, const char*, const char*> cases[] = {
      {Geoid::none, "height_msl_m", "545.400", "545.400", "545.400", "545.400"},
      {Geoid::add, "height_hae_m", "592.300", "545.400", "", "545.400"},
      {Geoid::subtract, "height_msl_m", "498.500", "498.500", "", ""}};
  for (const auto& [geoid, column, height, msl, height_alone, msl_alone] : cases) {
    options_.geoid = geoid;
    Decode(kDate + gga("000001", "46.9,M,2.5,0120") + gga("000002", ",M,,"));
    const auto rows = Table(Export("csv"));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].at(column), height);
    EXPECT_EQ(rows[1].at(column), height_alone);
    EXPECT_TRUE(Has(Export("nmea"), std::string(",0.90,") + msl + ",M,46.900,M,2.5,0120*",
                    std::string(",0.90,") + msl_alone + ",M,,M,,*"));
    EXPECT_TRUE(Has(Export("gpx"), std::string("<ele>") + msl + "</ele>"));
    EXPECT_EQ(Count(Export("gpx"), "<ele>"), *msl_alone == '\0' ? 1 : 2);
    EXPECT_TRUE(Has(Export("kml"), std::string(" ") + msl + "</gx:coord>"));
    EXPECT_EQ(Count(Export("kml"), "absolute"), 1);
    // Above the ellipsoid, with the separation that was stated last where a whole file states what it means.
    const std::string ellipsoid = geoid == Geoid::subtract ? "545.4000" : "592.3000";
    EXPECT_TRUE(Has(Export("pos"), "WGS84/ellipsoidal"));
    EXPECT_EQ(Count(Export("pos"), ' ' + ellipsoid + ' '), *msl_alone == '\0' ? 1 : 2);
    EXPECT_TRUE(Has(Export("geojson"), "[11.516666667,48.117300000," + ellipsoid.substr(0, 7) + "]},",
                    "[11.516666667,48.117300000]},"));
  }
}

TEST_F(HostExports, WriteWhatRtklibAndMapsRead) {
  Decode(kDate + WithChecksum("$GPGGA,235959.5,4807.038,S,01131.000,W,4,08,0.9,545.4,M,46.9,M,2.5,0120") +
         GgaAt("000001", 5));
  EXPECT_TRUE(Has(Export("pos"),
                  "\n2023/12/31 23:59:59.500  -48.117300000  -11.516666667   592.3000   1   8   0.0000 ",
                  "\n2024/01/01 00:00:01.000   48.117300000   11.516666667   592.3000   2   8   0.0000 ",
                  "   0.0000   2.50    0.0\n"));
  EXPECT_TRUE(Has(
      Export("geojson"),
      R"({"type":"Feature","geometry":{"type":"Point","coordinates":[11.516666667,48.117300000,592.300]},)"
      R"("properties":{"time":"2024-01-01T00:00:01.000Z","height_msl_m":545.400,"height_hae_m":592.300,)"
      R"("fix":"RTK float","segment":1,"used":8,"in_view":8,"hdop":0.90)"));
  EXPECT_TRUE(Export("geojson").ends_with("}}\n]}\n"));
  EXPECT_EQ(Count(Export("geojson"), "},\n{"), 1);
}

TEST_F(HostExports, SayWhereNoDateIsKnown) {
  const std::string rmc = "000000,V,,,,,,,311223,,";
  // No date is that of today.
  const std::pair<std::string, const char*> cases[] = {
      {GgaAt("000001"), ""},
      {WithChecksum("$GPRMC," + rmc) + GgaAt("000001"), "2023-12-31"},
      {WithChecksum("$GPRMC,000000,A,,,,,,,010124,,") + WithChecksum("$GPRMC," + rmc) + GgaAt("000001"),
       "2024-01-01"}};
  options_.exports.report = Path("html");
  for (const auto& [stream, date] : cases) {
    const Complaints complaints;
    Decode(stream);
    const bool known = *date != '\0';
    EXPECT_EQ(Count(complaints.Text(), "no date is known for a<b>"), known ? 0 : 1);
    EXPECT_EQ(Count(complaints.Text(), "\n"), known ? 0 : 1) << complaints.Text();
    EXPECT_EQ(Has(Export("html"), "The date is not known"), !known);
    EXPECT_TRUE(Has(Export("csv"), std::string("\n") + date));
  }
}

TEST_F(HostExports, MakeOneFileOfSeveralRecordings) {
  const std::string second = folder_ / "second.log";
  std::ofstream(second, std::ios::binary)
      << WithChecksum("$GPZDA,060000,05,01,2024,00,00") << GgaAt("060001") << GgaAt("060002");
  options_.files.push_back(second);
  const std::string cut = GgaAt("000001");
  Decode(kDate + GgaAt("235959") + GgaAt("000000") + cut.substr(0, cut.size() / 2));
  std::string times;
  for (auto& row : Table(Export("csv"))) times += row["time"].substr(0, 19) + '/' + row["segment"] + ' ';
  EXPECT_EQ(times,
            "2023-12-31T23:59:59/1 2024-01-01T00:00:00/1 2024-01-05T06:00:01/2 2024-01-05T06:00:02/2 ");
  EXPECT_TRUE(Has(Export("gpx"), ".log and 1 more</name>"));
  options_.exports.csv = second;
  EXPECT_THROW(Decode(kDate), Failure) << "it is read";
  options_.exports.csv = Path("never");
  options_.files.push_back(folder_ / "missing.log");
  EXPECT_THROW(Decode(kDate), Failure);
  EXPECT_FALSE(std::filesystem::exists(Path("never"))) << "nothing has begun";
}

// A converter that no one here wrote. It takes any number for a coordinate and ends well on broken input, so
// what counts is how many points it finds, and where.
TEST_F(HostExports, AreReadByAConverterAsTheSamePoints) {
  if (!HasTool("gpsbabel")) GTEST_SKIP() << "gpsbabel is missing";
  simulator::Options simulated;
  simulated.start_utc = std::chrono::sys_days(std::chrono::year(2024) / 5 / 14) - std::chrono::seconds(120);
  const auto receiver = simulator::MakeReceiver(simulated);
  std::string stream = WithChecksum("$GPZDA,235800,13,05,2024,00,00");
  for (int i = 0; i < 250; ++i) stream += receiver->Advance(1.0);
  Decode(stream);
  const auto rows = Table(Export("csv"));
  ASSERT_GE(rows.size(), 245u);
  for (const char* format : {"gpx", "kml", "nmea"}) {
    const std::string found = folder_ / "found.csv";
    ASSERT_EQ(std::system(("gpsbabel -t -i " + std::string(format) + " -f " + Path(format) +
                           " -o unicsv,utc=0 -F " + found)
                              .c_str()),
              0);
    const auto points = Table(ReadFile(found));
    ASSERT_EQ(points.size(), rows.size()) << format;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      auto row = rows[i], point = points[i];
      EXPECT_NEAR(std::stod(point["Latitude"]), std::stod(row["lat"]), 1e-6) << format;
      EXPECT_NEAR(std::stod(point["Longitude"]), std::stod(row["lon"]), 1e-6) << format;
      EXPECT_NEAR(std::stod(point["Altitude"]), std::stod(row["height_msl_m"]), 0.1) << format;
      EXPECT_EQ(point["Time"].substr(0, 8), row["time"].substr(11, 8)) << format;
    }
  }
}

TEST_F(HostExports, FiltersWhatIsShownAndExported) {
  // A hundredth of a minute of latitude is 18.5 m.
  const std::string stream = kDate + GgaAt("000000", 1, "4807.000") + GgaAt("000001", 1, "4807.002") +
                             GgaAt("000002", 1, "4807.010") + WithChecksum("$PGRME,15.0,M,45.0,M,25.0,M") +
                             GgaAt("000003", 0, "4807.010") + GgaAt("000004", 1, "4807.010") +
                             GgaAt("000010", 1, "4807.011");
  const auto seconds = [&] {
    Decode(stream);
    std::string text;
    for (auto& row : Table(Export("csv"))) text += row["time"].substr(17, 2) + '/' + row["segment"] + ' ';
    return text;
  };
  FilterOptions& filter = options_.exports.filter;
  filter.min_distance = 10.0;
  EXPECT_EQ(seconds(), "00/1 02/1 04/2 ");
  filter = {.min_interval = 3.0};
  EXPECT_EQ(seconds(), "00/1 04/2 10/2 ");
  filter = {.duration = 2.0};
  EXPECT_EQ(seconds(), "00/1 01/1 02/1 ");
  filter = {.only = Kinds(Kind::report)};
  EXPECT_EQ(seconds(), "");
  // And where nothing is exported.
  const std::tuple<const char*, const char*, int> rows[] = {{"--only fix", "class", 6},
                                                            {"--only fix --count 2", "class", 2},
                                                            {"--min-interval 3", "TPV", 4},
                                                            {"--min-distance 10", "TPV", 4}};
  for (const auto& [filters, word, count] : rows) {
    const std::string shown =
        OutputOf(std::string("decode ") + filters + " --format json " + options_.files[0]);
    EXPECT_EQ(Count(shown, word), count) << filters << '\n' << shown;
  }
}

TEST_F(HostExports, NameThePathThatCannotBeWritten) {
  const auto failure = [this] { return ErrorOf([&] { Decode(GgaAt("000000")); }); };
  options_.exports.kml = "/nonexistent/x.kml";
  EXPECT_EQ(failure(), "1 cannot write /nonexistent/x.kml (--kml): No such file or directory");
  options_.exports.kml = Path("gpx");
  EXPECT_EQ(failure(), "2 --gpx and --kml both name " + Path("gpx"));
  options_.exports.kml = options_.files[0];
  EXPECT_EQ(failure(), "2 --kml " + options_.files[0] + " is the recording itself");
  EXPECT_EQ(ReadFile(options_.files[0]), GgaAt("000000"));
  options_.exports.kml.clear();
  options_.exports.report = "/nonexistent/x.html";
  EXPECT_EQ(failure(), "1 cannot write /nonexistent/x.html (--report): No such file or directory");
}

TEST_F(HostExports, LeaveWholeFilesOnAFullDisk) {
  std::string stream;
  for (int i = 0; i < 6000; ++i) {
    const std::string time = std::to_string(1'000'000 + i / 3600 * 10000 + i / 60 % 60 * 100 + i % 60);
    stream += GgaAt(time.substr(1));
  }
  WriteFile(options_.files[0], stream);
  options_.exports.report = Path("html");
  {
    const SmallDisk disk(100'000);
    EXPECT_TRUE(Has(ErrorOf([&] { Decode(); }), "out.gpx (--gpx): File too large"));
  }
  ExpectWellFormed();
  EXPECT_TRUE(Export("html").ends_with("</html>\n"));
  EXPECT_GT(Count(Export("gpx"), "<trkpt"), 250);
  EXPECT_GT(Count(Export("kml"), "<when>"), 250);
}
