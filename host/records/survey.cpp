#include "host/records/survey.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

double RadiusOf(std::vector<double>& distances, double part) {
  const auto count = static_cast<double>(distances.size());
  const auto rank = static_cast<std::ptrdiff_t>(std::ceil(part * count - 1e-9)) - 1;
  std::nth_element(distances.begin(), distances.begin() + rank, distances.end());
  return distances[static_cast<std::size_t>(rank)];
}

}  // namespace

void Spread::Add(double value) {
  // The distance from the mean before and the one from the mean after: nothing large is ever subtracted.
  const double before = value - mean_;
  mean_ += before / static_cast<double>(++count_);
  squares_ += before * (value - mean_);
}

std::optional<double> Spread::Deviation() const {
  if (count_ < 2) return std::nullopt;
  return std::sqrt(squares_ / static_cast<double>(count_ - 1));
}

void Survey::Cloud::Add(const Point& fix, const std::optional<double>& height) {
  east.Add(fix.east);
  north.Add(fix.north);
  if (height) up.Add(*height);
  if (fixes++ % every != 0) return;
  kept.push_back(fix);
  if (kept.size() < 2 * kLeastKept) return;
  for (std::size_t i = 0; i < kLeastKept; ++i) kept[i] = kept[2 * i];
  kept.resize(kLeastKept);
  every *= 2;
}

void Survey::Add(const PositionEpoch& fix) {
  if (all_.fixes == 0) {
    constexpr double kNear = 1e-3;
    latitude_ = fix.latitude;
    longitude_ = fix.longitude;
    per_degree_ = OffsetOf(latitude_ - kNear / 2.0, 0.0, latitude_ + kNear / 2.0, kNear);
    per_degree_ = {per_degree_.east / kNear, per_degree_.north / kNear};
  }
  const Point point{std::remainder(fix.longitude - longitude_, 360.0) * per_degree_.east,
                    (fix.latitude - latitude_) * per_degree_.north, fix.signal};
  all_.Add(point, fix.height);
  kinds_[fix.signal].Add(point, fix.height);
}

SurveyResult Survey::ResultOf(const Cloud& cloud) const {
  SurveyResult result;
  result.fixes = cloud.fixes;
  result.latitude = latitude_ + cloud.north.Mean() / per_degree_.north;
  // At a pole every longitude is the same place.
  const double turn = per_degree_.east > 0.0 ? cloud.east.Mean() / per_degree_.east : 0.0;
  result.longitude = std::remainder(longitude_ + turn, 360.0);
  if (cloud.up.Count() > 0) result.height = cloud.up.Mean();
  result.east = cloud.east.Deviation();
  result.north = cloud.north.Deviation();
  result.up = cloud.up.Deviation();
  if (result.east) result.drms2 = 2.0 * std::hypot(*result.east, *result.north);
  std::vector<double> distances;
  for (const Point& fix : cloud.kept)
    distances.push_back(std::hypot(fix.east - cloud.east.Mean(), fix.north - cloud.north.Mean()));
  result.cep50 = RadiusOf(distances, 0.5);
  result.r95 = RadiusOf(distances, 0.95);
  return result;
}

std::map<int, SurveyResult> Survey::ByKind() const {
  std::map<int, SurveyResult> results;
  for (const auto& [signal, cloud] : kinds_) results.emplace(signal, ResultOf(cloud));
  return results;
}

std::vector<Survey::Point> Survey::Points() const {
  std::vector<Point> points = all_.kept;
  for (Point& point : points) {
    point.east -= all_.east.Mean();
    point.north -= all_.north.Mean();
  }
  return points;
}

bool HasMoved(const SurveyResult& result) {
  return result.r95 > Survey::kStill;
}

}  // namespace host
