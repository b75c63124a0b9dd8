#include <nlohmann/json.hpp>
#include <numbers>

#include "host/exports/reportpage.h"
#include "host/records/fixkind.h"
#include "tests/support/browser.h"

using namespace host;

namespace {

/// What a page has to draw.
nlohmann::json DataOf(const std::string& page) {
  const std::string mark = "id=\"run\">";
  const auto start = page.find(mark) + mark.size();
  return nlohmann::json::parse(page.substr(start, page.find("</script>", start) - start));
}

Moment At(long long ms) {
  return Moment(std::chrono::milliseconds(ms));
}

/// A walk to the north at one metre a second, with a fix each second.
void Walk(RunStatistics& run, long long start, int seconds, int signal = UDF_SIGNAL_GPS) {
  for (int i = 0; i < seconds; ++i) {
    PositionEpoch epoch;
    epoch.time = At(start + i * 1000);
    epoch.valid = signal != UDF_SIGNAL_NONE;
    epoch.starts_segment = i == 0 && epoch.valid;
    epoch.signal = signal;
    epoch.latitude = static_cast<double>(i) / 111'000.0;
    epoch.height = i == 777 ? 5000.0 : 100.0;
    epoch.speed = 1.0;
    run.Add(epoch);
  }
}

TEST(HostReport, MeasuresTheGroundAtAnyLatitude) {
  constexpr double kNear = 0.001;  // degrees
  for (const double latitude : {0.0, 47.0, -89.0}) {
    const Plane plane(latitude, 180.0);
    const Offset told = plane.Of(latitude + kNear, -180.0 + kNear);
    const Offset known = OffsetOf(latitude, 180.0, latitude + kNear, -180.0 + kNear);
    EXPECT_NEAR(told.east, known.east, 0.01) << latitude;
    EXPECT_NEAR(told.north, known.north, 0.01) << latitude;
  }
  EXPECT_NEAR(Plane(90.0 - kNear, 20.0).Of(90.0 - kNear, -160.0).north, 2.0 * 111.694, 0.01)
      << "over the pole";
  EXPECT_NEAR(Plane(0.0, 0.0).Of(0.0, 90.0).Length(), 10.0e6, 0.05e6);
}

TEST(HostReport, KeepsALongRunInLittleMemoryAndItsExtremes) {
  RunStatistics run;
  constexpr int kSeconds = 200'000;
  Walk(run, 0, kSeconds);
  EXPECT_LT(run.height.Pieces().size(), 1300u);
  EXPECT_EQ(run.track.Points().size(), 2u) << "it goes straight on";
  double most = 0.0;
  for (const auto& piece : run.height.Pieces()) most = std::max(most, piece.values.most);
  EXPECT_EQ(most, 5000.0);
  EXPECT_NEAR(run.distance, kSeconds * 110'574.0 / 111'000.0, 200.0);
  EXPECT_NEAR(run.track.Last()->north, kSeconds * 110'574.0 / 111'000.0, 800.0);
}

TEST(HostReport, KeepsTheBeginningOfALongRunAsFineAsItsEnd) {
  RunStatistics run;
  Sky sky;
  sky.satellites = {{{Gnss::galileo, 17}, 45, 0, 41, true}};
  for (int i = 0; i < 3000; ++i) {
    Walk(run, i * 60'000, 60, i % 2);
    sky.satellites[0].azimuth = i % 360;
    run.AddSatellites(sky);
  }
  EXPECT_LE(run.signals.size(), 400u);
  std::chrono::milliseconds without_fix{0};
  for (const auto& span : run.signals) {
    EXPECT_LT((span.end - span.start).count(), 3000 * 60'000 / 100);
    const auto part = span.mixed.find(UDF_SIGNAL_NONE);
    if (part != span.mixed.end()) without_fix += part->second;
    if (span.mixed.empty() && span.signal == UDF_SIGNAL_NONE) without_fix += span.end - span.start;
  }
  EXPECT_NEAR(static_cast<double>(without_fix.count()), 3000 * 60'000 / 2, 2 * 60'000.0)
      << "every other minute";
  EXPECT_LE(run.satellites.at({Gnss::galileo, 17}).places.size(), 400u);
}

TEST(HostReport, TellsWhatTheRunWasLikeInOneFile) {
  RunStatistics run;
  Walk(run, 1'700'000'000'000, 120);
  Walk(run, 1'700'000'120'000, 30, UDF_SIGNAL_NONE);
  Sky sky;
  sky.satellites = {{{Gnss::galileo, 17}, 45, 180, 41, true}, {{Gnss::gps, 17}}};
  run.AddSatellites(sky);
  Tally tally;
  tally.checksum_errors = 12'345;
  const std::string page = ReportPage({"a<b>.log", "Other", Geoid::none}, run, tally);
  EXPECT_TRUE(Has(page, "<title>a&lt;b&gt;.log</title>", ">2023-11-14 22:13:20 UTC<", ">2 min 29 s<",
                  ">120 (80.0 %)<", ">30 (20.0 %)<", ">118 m<", ">3.6 / 3.6 / 3.6<", ">12\u202F345<",
                  "default-src 'none'"));
  for (const char* fetch :
       {"https:", "url(", "@import", "<link", " src=", "fetch(", "XMLHttp", "EventSource", "<!--"}) {
    EXPECT_FALSE(Has(page, fetch)) << fetch;
  }
  for (int signal = UDF_SIGNAL_NONE; signal <= UDF_SIGNAL_UNKNOWN; ++signal)
    EXPECT_TRUE(Has(page, ".fix-" + std::string(FixKindOf(signal).style))) << "no colour for it";
  EXPECT_EQ(DataOf(page)["courses"].size(), 3u) << "no strength was told";
  const std::string empty = ReportPage({"x", "Other", Geoid::none}, RunStatistics(), Tally());
  EXPECT_TRUE(Has(empty, "no fix was found"));
  EXPECT_TRUE(empty.ends_with("</html>\n"));
  EXPECT_EQ(DataOf(empty)["track"].size(), 0u);
}

TEST(HostReport, DrawsTheRunInABrowser) {
  RunStatistics run;
  Walk(run, 1'700'000'000'000, 41);
  Walk(run, 1'700'003'640'000, 21, UDF_SIGNAL_RTK_FIXED);
  Sky sky;
  sky.satellites = {{{Gnss::galileo, 17}, 45, 180, 41, true}, {{Gnss::glonass, 3}, 10, 90}};
  run.AddSatellites(sky);
  const std::string file = testing::TempDir() + "gpsengine-report-" + std::to_string(getpid()) + ".html";
  // The page measures the ground by itself where it follows a receiver.
  std::ofstream(file)
      << ReportPage({"a<b>&\"", "Other", Geoid::none}, run, Tally())
      << "<script>document.body.dataset.plane = JSON.stringify(planeAt({lat: 89.99, lon: 20})({lat: 89.98, "
         "lon: -175}))</script>";
  const auto page = LookAtPage("file://" + file);
  std::filesystem::remove(file);
  if (!page) GTEST_SKIP() << "no chromium to look at the page with";
  EXPECT_TRUE(Has(*page, "<h1>a&lt;b&gt;&amp;\"</h1>", "class=\"fix-gps way\" d=\"M",
                  "class=\"fix-fixed way\" d=\"M", ">60 min<", ">22:13:20<", ">north of the start<", ">95 %<",
                  "class=\"fix-gps dots\" d=\"M", "class=\"course-speed curve\" d=\"M",
                  "<title>satellite E17, mean 41 dB-Hz, used 100 % of the time</title>",
                  "class=\"signal sys-galileo used\"", "class=\"sat sys-glonass\"",
                  "<li><i class=\"fix-fixed\"></i>RTK fixed</li>"));
  EXPECT_FALSE(Has(*page, "NaN"));
  const std::string mark = "data-plane=\"";
  const auto start = page->find(mark) + mark.size();
  std::string told = page->substr(start, page->find('"', start) - start);
  for (std::size_t at; (at = told.find("&quot;")) != std::string::npos;) told.replace(at, 6, "\"");
  const Offset known = Plane(89.99, 20.0).Of(89.98, -175.0);
  EXPECT_NEAR(nlohmann::json::parse(told)["east"], known.east, 1e-6);
  EXPECT_NEAR(nlohmann::json::parse(told)["north"], known.north, 1e-6);
}

TEST(HostReport, TellsWhereAStillReceiverStandsAndInWhichUnits) {
  RunStatistics run;
  PositionEpoch epoch;
  epoch.valid = true;
  epoch.height = 100.0;
  for (int i = 0; i < 200; ++i) {
    epoch.time = At(i * 1000);
    epoch.signal = i < 100 ? UDF_SIGNAL_GPS : UDF_SIGNAL_RTK_FIXED;
    epoch.latitude = 47.0 + (i < 100 ? (i % 2) * 2.0 / 111'170.0 : 0.0);
    epoch.longitude = -9.0;
    run.Add(epoch);
  }
  RunFacts facts{"x", "Other", Geoid::none};
  const std::string metric = ReportPage(facts, run, Tally());
  const auto row = [](const std::string& name, const std::string& all, const std::string& gps,
                      const std::string& fixed) {
    return "<th>" + name + "</th><td>" + all + "</td><td>" + gps + "</td><td>" + fixed + "</td>";
  };
  for (const std::string& text :
       {row("Fixes", "200", "100", "100"), row("CEP50", "0.500 m", "1.000 m", "0.000 m"),
        row("95 %", "1.500 m", "1.000 m", "0.000 m"),
        row("Deviation north", "0.868 m", "1.005 m", "0.000 m")})
    EXPECT_TRUE(Has(metric, text)) << text;
  facts.display.units = Units::imperial;
  const std::string imperial = ReportPage(facts, run, Tally());
  EXPECT_TRUE(Has(imperial, ">1.640 ft<") && !Has(imperial, " m<"));
  const nlohmann::json data = DataOf(imperial);
  EXPECT_NEAR(data["cloud"]["cep50"], 0.5, 0.001);
}

/// Where a vehicle is after so many seconds, in metres from its start. Circles of 200 m, one in ten minutes,
/// as a receiver sees them: with an error that wanders within centimetres.
Offset OnCircles(double seconds) {
  const double turn = seconds * 2.0 * std::numbers::pi / 600.0;
  return {200.0 * std::sin(turn) + 0.03 * std::sin(seconds / 37.0),
          200.0 - 200.0 * std::cos(turn) + 0.03 * std::sin(seconds / 53.0)};
}

double Distance(const Offset& place, const Offset& a, const Offset& b) {
  const double x = b.east - a.east, y = b.north - a.north, length = x * x + y * y;
  const double along =
      length > 0.0 ? ((place.east - a.east) * x + (place.north - a.north) * y) / length : 0.0;
  const double part = std::clamp(along, 0.0, 1.0);
  return std::hypot(place.east - a.east - part * x, place.north - a.north - part * y);
}

TEST(HostReport, DrawsADayAtTenHertzWithinTwoPixels) {
  constexpr double kLatitude = 47.0;
  const Offset degree = OffsetOf(kLatitude - 0.5, 9.0, kLatitude + 0.5, 10.0);
  RunStatistics run;
  PositionEpoch epoch;
  epoch.valid = true;
  epoch.signal = UDF_SIGNAL_RTK_FIXED;
  for (int i = 0; i < 864'000; ++i) {
    const Offset place = OnCircles(i / 10.0);
    epoch.time = At(i * 100);
    epoch.starts_segment = i == 0;
    epoch.latitude = kLatitude + place.north / degree.north;
    epoch.longitude = 9.0 + place.east / degree.east;
    run.Add(epoch);
  }
  // What the page draws, from the first fix.
  const nlohmann::json points = DataOf(ReportPage({"x", "Other", Geoid::none}, run, Tally()))["track"];
  EXPECT_LT(points.size(), 5000u);
  const auto at = [](const nlohmann::json& point) { return Offset{point[0], point[1]}; };
  for (int i = 0; i < 864'000; i += 997) {
    double nearest = 1e9;
    for (std::size_t k = 1; k < points.size(); ++k)
      if (points[k].size() < 4)
        nearest = std::min(nearest, Distance(OnCircles(i / 10.0), at(points[k - 1]), at(points[k])));
    ASSERT_LT(nearest, 2.0 * 400.0 / 500.0) << points.size() << " points, a pixel of 400 m in 500";
  }
}

}  // namespace
