#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "host/exports/axis.h"
#include "host/exports/reportpage.h"
#include "host/exports/timescale.h"

using namespace host;

namespace {

std::string Labels(const Axis& axis) {
  std::string text;
  for (const auto& tick : axis.ticks) text += tick.label + ' ';
  return text;
}

/// A walk to the north at one metre a second, with a fix each second.
void Walk(RunStatistics& run, Moment start, int seconds, int signal = UDF_SIGNAL_GPS) {
  for (int i = 0; i < seconds; ++i) {
    PositionEpoch epoch;
    epoch.time = start + i * 1000;
    epoch.fix = signal != UDF_SIGNAL_NONE;
    epoch.starts_segment = i == 0 && epoch.fix;
    epoch.signal = signal;
    epoch.latitude = static_cast<double>(i) / 111'000.0;
    epoch.height = i == 777 ? 5000.0 : 100.0;
    epoch.speed = 1.0;
    run.Add(epoch);
  }
}

}  // namespace

TEST(HostReport, LabelsAnAxisWithRoundNumbers) {
  EXPECT_EQ(Labels(RoundAxis(0.0, 47.0, 5, 1.0)), "0 10 20 30 40 50 ");
  EXPECT_EQ(Labels(RoundAxis(278.02, 280.31, 5, 0.01)), "278.0 278.5 279.0 279.5 280.0 280.5 ");
  EXPECT_EQ(Labels(RoundAxis(-0.3, 0.1, 4, 0.1)),
            "\xE2\x88\x92"
            "0.3 \xE2\x88\x92"
            "0.2 \xE2\x88\x92"
            "0.1 0.0 0.1 ");
  EXPECT_EQ(Labels(RoundAxis(7.0, 7.0, 4, 1.0)), "7 8 ");
  EXPECT_EQ(Labels(ExactAxis(-1234.0, 2345.0, 4)),
            "\xE2\x88\x92"
            "1000 0 1000 2000 ");
}

TEST(HostReport, CutsALongPauseOutOfTheTimes) {
  constexpr Moment kStart = 1'700'000'000'000;
  const TimeScale scale({{kStart, kStart + 40'000, 1}, {kStart + 3'640'000, kStart + 3'660'000, 1}}, 100.0,
                        800.0);
  ASSERT_EQ(scale.Cuts().size(), 1u);
  EXPECT_EQ(RoughSpan(scale.Cuts()[0].span), "60 min");
  EXPECT_DOUBLE_EQ(scale.X(kStart), 100.0);
  EXPECT_DOUBLE_EQ(scale.X(kStart + 3'660'000), 900.0);
  EXPECT_GT(scale.X(kStart + 40'000), 500.0);
  EXPECT_EQ(scale.Ticks().front().label, "22:13:20");
  for (std::size_t i = 1; i < scale.Ticks().size(); ++i)
    EXPECT_GT(scale.Ticks()[i].x, scale.Ticks()[i - 1].x + 50.0);
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
  EXPECT_EQ(run.track.Last()->latitude, run.last_fix->latitude);
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
  Moment without_fix = 0;
  for (const auto& span : run.signals) {
    EXPECT_LT(span.end - span.start, 3000 * 60'000 / 100);
    const auto part = span.mixed.find(UDF_SIGNAL_NONE);
    if (part != span.mixed.end()) without_fix += part->second;
    if (span.mixed.empty() && span.signal == UDF_SIGNAL_NONE) without_fix += span.end - span.start;
  }
  EXPECT_NEAR(static_cast<double>(without_fix), 3000 * 60'000 / 2, 2 * 60'000.0) << "every other minute";
  const auto& places = run.satellites.at({Gnss::galileo, 17}).places;
  EXPECT_LE(places.size(), 400u);
  for (std::size_t i = 1; i < places.size(); ++i) {
    EXPECT_LT(std::fabs(std::remainder(places[i].azimuth - places[i - 1].azimuth, 360.0)), 5.0);
  }
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
  for (const char* text : {"<title>a&lt;b&gt;.log</title>", ">2023-11-14 22:13:20 UTC<", ">2 min 29 s<",
                           ">120 (80.0 %)<", ">30 (20.0 %)<", ">118 m<", ">3.6 / 3.6 / 3.6<",
                           ">12\xE2\x80\xAF"
                           "345<",
                           "satellite E17, mean 41 dB-Hz, used 100 %"}) {
    EXPECT_NE(page.find(text), std::string::npos) << text;
  }
  for (const char* fetch : {"http:", "https:", "url(", "@import", "<script", "<link", "src="}) {
    EXPECT_EQ(page.find(fetch), std::string::npos) << fetch;
  }
  EXPECT_NE(page.find("legend", page.find("<h2>Over time")), std::string::npos) << "of one kind of fix too";
  const std::string empty = ReportPage({"x", "Other", Geoid::none}, RunStatistics(), Tally());
  EXPECT_NE(empty.find("no fix was found"), std::string::npos);
  EXPECT_TRUE(empty.ends_with("</html>\n"));
}

TEST(HostReport, TellsWhereAStillReceiverStandsAndInWhichUnits) {
  RunStatistics run;
  PositionEpoch epoch;
  epoch.fix = true;
  epoch.height = 100.0;
  for (int i = 0; i < 200; ++i) {
    epoch.time = i * 1000;
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
    EXPECT_NE(metric.find(text), std::string::npos) << text;
  facts.display.units = Units::imperial;
  facts.display.angles = AngleFormat::minutes;
  const std::string imperial = ReportPage(facts, run, Tally());
  for (const char* text : {">1.640 ft<", ">328.084 ft<", "ft</small>", "east of the mean, ft",
                           "47°\xC2\xA0"
                           "00.00000'\xC2\xA0N, 9°"})
    EXPECT_NE(imperial.find(text), std::string::npos) << text;
  EXPECT_EQ(imperial.find(" m<"), std::string::npos);
  epoch.latitude = 48.0;
  for (int i = 200; i < 300; ++i) {
    epoch.time = i * 1000;
    run.Add(epoch);
  }
  EXPECT_EQ(ReportPage(facts, run, Tally()).find("Static survey"), std::string::npos) << "it has moved";
}

namespace {

/// Where a vehicle is after so many seconds, in metres from its start.
struct Way {
  double east, north;
};

/// Circles of 200 m, one in ten minutes, as a receiver sees them: with an error that wanders within
/// centimetres.
Way OnCircles(double seconds) {
  const double turn = seconds * 2.0 * std::numbers::pi / 600.0;
  return {200.0 * std::sin(turn) + 0.03 * std::sin(seconds / 37.0),
          200.0 - 200.0 * std::cos(turn) + 0.03 * std::sin(seconds / 53.0)};
}

/// Lanes of 900 m up and down a field, 15 m apart, at 3 m/s.
Way OnLanes(double seconds) {
  const double way = seconds * 3.0, lane = std::floor(way / 915.0), along = way - lane * 915.0;
  const double north = std::min(along, 900.0);
  return {lane * 15.0 + std::max(0.0, along - 900.0), std::fmod(lane, 2.0) == 0.0 ? north : 900.0 - north};
}

double Distance(const Way& place, const Way& a, const Way& b) {
  const double x = b.east - a.east, y = b.north - a.north, length = x * x + y * y;
  const double along =
      length > 0.0 ? ((place.east - a.east) * x + (place.north - a.north) * y) / length : 0.0;
  const double part = std::clamp(along, 0.0, 1.0);
  return std::hypot(place.east - a.east - part * x, place.north - a.north - part * y);
}

}  // namespace

TEST(HostReport, DrawsADayAtTenHertzWithinTwoPixels) {
  constexpr double kLatitude = 47.0;
  const Offset degree = OffsetOf(kLatitude - 0.5, 9.0, kLatitude + 0.5, 10.0);
  for (const auto& [way, pixel] : {std::pair{&OnCircles, 400.0 / 500.0}, {&OnLanes, 4260.0 / 770.0}}) {
    RunStatistics run;
    PositionEpoch epoch;
    epoch.fix = true;
    epoch.signal = UDF_SIGNAL_RTK_FIXED;
    for (int i = 0; i < 864'000; ++i) {
      const Way place = way(i / 10.0);
      epoch.time = i * 100;
      epoch.starts_segment = i == 0;
      epoch.latitude = kLatitude + place.north / degree.north;
      epoch.longitude = 9.0 + place.east / degree.east;
      run.Add(epoch);
    }
    const auto points = run.track.Points();
    EXPECT_LT(points.size(), 3000u);
    const auto at = [&](const Sketch::Point& point) {
      return Way{(point.longitude - 9.0) * degree.east, (point.latitude - kLatitude) * degree.north};
    };
    double furthest = 0.0;
    for (int i = 0; i < 864'000; i += 997) {
      double nearest = 1e9;
      for (std::size_t k = 1; k < points.size(); ++k) {
        if (!points[k].broken)
          nearest = std::min(nearest, Distance(way(i / 10.0), at(points[k - 1]), at(points[k])));
      }
      furthest = std::max(furthest, nearest);
    }
    EXPECT_LT(furthest, 2.0 * pixel) << points.size() << " points";
  }
}
