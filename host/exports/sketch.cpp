#include "host/exports/sketch.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

// A page draws a track at most 770 pixels wide. The grid is up to twice as wide as the track, so that its
// cells are at most 0.38 pixels. A line may pass half a cell off a place and end as much before it, and one
// that was drawn before may pass 1.8 cells off; each time the grid grows that may happen once more, in cells
// of half the size. All in all that is less than two pixels.
constexpr int kCells = 4096;
constexpr double kTolerance = 0.5;  // cells
// What a page can hold. A track with more corners covers so much of it that a coarser one looks the same.
constexpr std::size_t kMostPoints = 40'000;

}  // namespace

bool Sketch::Cone::Takes(const Place& offset) {
  const auto cross = [](const Place& a, const Place& b) { return a.x * b.y - a.y * b.x; };
  const double distance = std::hypot(offset.x, offset.y);
  if (distance < far_ - kTolerance) return false;  // it turns back
  if (distance > kTolerance) {
    const double sine = kTolerance / distance, cosine = std::sqrt(1.0 - sine * sine);
    const Place right{offset.x * cosine + offset.y * sine, offset.y * cosine - offset.x * sine};
    const Place left{offset.x * cosine - offset.y * sine, offset.y * cosine + offset.x * sine};
    if (narrow_ && (cross(right_, offset) < 0.0 || cross(offset, left_) < 0.0)) return false;
    if (!narrow_ || cross(right_, right) > 0.0) right_ = right;
    if (!narrow_ || cross(left, left_) > 0.0) left_ = left;
    narrow_ = true;
  }
  far_ = std::max(far_, distance);
  return true;
}

double Sketch::Cell() const {
  return side_ / kCells;
}

void Sketch::Add(const Point& point) {
  if (!last_) {
    west_ = east_ = point.east;
    south_ = north_ = point.north;
  }
  last_ = point;
  if (Widen(point)) Rebuild();
  Follow(point);
  while (points_.size() > kMostPoints) {
    side_ *= 2.0;
    Rebuild();
  }
}

/// Whether the grid has grown.
bool Sketch::Widen(const Point& point) {
  south_ = std::min(south_, point.north);
  north_ = std::max(north_, point.north);
  west_ = std::min(west_, point.east);
  east_ = std::max(east_, point.east);
  const double extent = std::max(north_ - south_, east_ - west_), before = side_;
  while (side_ < extent) side_ *= 2.0;
  return side_ > before;
}

void Sketch::Rebuild() {
  const std::vector<Point> all = Points();
  points_.clear();
  covered_.clear();
  anchor_.reset();
  end_.reset();
  joined_ = false;
  for (const Point& point : all) Follow(point);
}

Sketch::Place Sketch::PlaceOf(const Point& point) const {
  return {point.east / Cell(), point.north / Cell()};
}

void Sketch::Follow(const Point& point) {
  if (!end_ || point.broken) {
    if (end_) Draw();
    anchor_ = end_ = point;
    cone_ = {};
    joined_ = false;
    return;
  }
  const Place at = PlaceOf(point);
  const auto offset = [&] {
    const Place from = PlaceOf(*anchor_);
    return Place{at.x - from.x, at.y - from.y};
  };
  if (point.signal != end_->signal || !cone_.Takes(offset())) {
    Draw();
    cone_ = {};
    cone_.Takes(offset());
  }
  end_ = point;
}

/// Ends the current line, and begins another where it ends.
void Sketch::Draw() {
  const bool is_new = Cover(PlaceOf(*anchor_), PlaceOf(*end_), end_->signal);
  const bool is_dot = anchor_->east == end_->east && anchor_->north == end_->north;
  if (is_new && !joined_) points_.push_back({anchor_->east, anchor_->north, end_->signal, true});
  if (is_new && !is_dot) {
    points_.push_back(*end_);
    points_.back().broken = false;
  }
  joined_ = is_new || (is_dot && joined_);
  anchor_ = end_;
}

/// Says whether some cell on the way had no line of that kind. The grid repeats itself all over the plane, so
/// that a track which fits in fits in wherever it lies.
bool Sketch::Cover(const Place& from, const Place& to, int signal) {
  std::vector<bool>& cells = covered_[signal];
  cells.resize(static_cast<std::size_t>(kCells) * kCells);
  const auto row = [](double place) {
    return static_cast<std::size_t>(static_cast<long long>(std::floor(place)) & (kCells - 1));
  };
  const double dx = to.x - from.x, dy = to.y - from.y;
  const auto steps = static_cast<int>(std::ceil(2.0 * std::max(std::fabs(dx), std::fabs(dy)))) + 1;
  bool is_new = false;
  for (int i = 0; i <= steps; ++i) {
    const double part = static_cast<double>(i) / steps;
    auto cell = cells[row(from.y + dy * part) * kCells + row(from.x + dx * part)];
    is_new = is_new || !cell;
    cell = true;
  }
  return is_new;
}

std::vector<Sketch::Point> Sketch::Points() const {
  std::vector<Point> points = points_;
  if (!end_) return points;
  if (!joined_) points.push_back({anchor_->east, anchor_->north, end_->signal, true});
  if (anchor_->east != end_->east || anchor_->north != end_->north) {
    points.push_back(*end_);
    points.back().broken = false;
  }
  return points;
}

}  // namespace host
