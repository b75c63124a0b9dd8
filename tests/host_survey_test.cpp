#include <numbers>
#include <random>

#include "host/records/survey.h"
#include "tests/support/basics.h"

using namespace host;

namespace {

/// A fix that many metres off a place at 48° N, by the length of a degree there on the ellipsoid of WGS 84.
PositionEpoch FixAt(double east, double north, double height, int signal = UDF_SIGNAL_GPS) {
  constexpr double kEastDegree = 74'625.3536, kNorthDegree = 111'190.3226;
  PositionEpoch fix;
  fix.valid = true;
  fix.signal = signal;
  fix.latitude = 48.0 + north / kNorthDegree;
  fix.longitude = std::remainder(180.0 + east / kEastDegree, 360.0);  // on the line where the date changes
  fix.height = height;
  return fix;
}

}  // namespace

// Half a day at 10 Hz: what is kept is thinned six times. Of a round cloud the radii are the deviation's
// sqrt(2 ln 2) and sqrt(-2 ln 0.05).
TEST(HostSurvey, MeasuresAGaussianCloud) {
  std::mt19937_64 random(20'240'514);
  std::normal_distribution<double> round(0.0, 2.0), tall(0.0, 5.0);
  Survey survey;
  constexpr int kFixes = 500'000;
  for (int i = 0; i < kFixes; ++i)
    survey.Add(FixAt(1.0 + round(random), round(random) - 1.0, 8000.0 + tall(random)));
  const SurveyResult all = survey.Result();
  EXPECT_EQ(all.fixes, kFixes);
  EXPECT_NEAR(*all.east, 2.0, 0.01);
  EXPECT_NEAR(*all.north, 2.0, 0.01);
  EXPECT_NEAR(*all.up, 5.0, 0.02);
  EXPECT_NEAR(*all.height, 8000.0, 0.02);
  const PositionEpoch mean = FixAt(1.0, -1.0, 0.0);
  EXPECT_LT(OffsetOf(mean.latitude, mean.longitude, all.latitude, all.longitude).Length(), 0.01);
  EXPECT_NEAR(*all.drms2, 2.0 * std::sqrt(8.0), 0.02);
  EXPECT_NEAR(all.cep50, 2.0 * 1.17741, 0.06);
  EXPECT_NEAR(all.r95, 2.0 * 2.44775, 0.15);
  EXPECT_FALSE(HasMoved(all));
  EXPECT_LT(survey.Points().size(), 2 * Survey::kLeastKept);
}

TEST(HostSurvey, MeasuresEachKindOfFixAboutItsOwnMean) {
  Survey survey;
  for (int degrees = 0; degrees < 360; ++degrees) {
    const double angle = degrees * std::numbers::pi / 180.0;
    survey.Add(FixAt(3.0 * std::cos(angle), 3.0 * std::sin(angle), 100.0));
  }
  survey.Add(FixAt(500.0, 0.0, 90.0, UDF_SIGNAL_RTK_FIXED));
  const auto kinds = survey.ByKind();
  ASSERT_EQ(kinds.size(), 2u);
  const SurveyResult& ring = kinds.at(UDF_SIGNAL_GPS);
  EXPECT_NEAR(ring.cep50, 3.0, 1e-4);
  EXPECT_NEAR(ring.r95, 3.0, 1e-4);
  EXPECT_NEAR(*ring.drms2, 6.0 * std::sqrt(360.0 / 359.0), 1e-4);
  EXPECT_NEAR(*ring.up, 0.0, 1e-9);
  const SurveyResult& one = kinds.at(UDF_SIGNAL_RTK_FIXED);
  EXPECT_EQ(one.fixes, 1);
  EXPECT_FALSE(one.east || one.north || one.up || one.drms2) << "one fix has no deviation";
  EXPECT_EQ(one.cep50, 0.0);
  EXPECT_EQ(one.height, 90.0);
  EXPECT_NEAR(one.latitude, 48.0, 1e-9);
}
