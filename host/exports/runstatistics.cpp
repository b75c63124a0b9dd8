#include "host/exports/runstatistics.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace host {

namespace {

constexpr double kDegrees = 180.0 / std::numbers::pi;
// More than these a drawing does not show.
constexpr std::size_t kMostPieces = 1200;
constexpr std::size_t kMostPoints = 4000;
constexpr std::size_t kMostSpans = 400;
constexpr std::size_t kMostPlaces = 400;
constexpr std::size_t kMostSatellites = 200;
// Metres. Shorter steps are the receiver's noise, which adds up.
constexpr double kStep = 1.0;
constexpr long long kFixesOfSpeed = 3;

void DropEverySecond(std::vector<SatelliteTrail::Place>& places) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < places.size(); i += 2) places[kept++] = places[i];
  places.resize(kept);
}

}  // namespace

void Range::Add(double value) {
  ++count;
  sum += value;
  least = std::min(least, value);
  most = std::max(most, value);
}

void Range::Add(const Range& other) {
  count += other.count;
  sum += other.sum;
  least = std::min(least, other.least);
  most = std::max(most, other.most);
}

void Envelope::Add(Moment time, double value, bool broken) {
  all_.Add(value);
  if (pieces_.empty() || broken || pieces_.back().values.count >= per_piece_) {
    pieces_.push_back({time, time, broken, {}});
  }
  pieces_.back().end = time;
  pieces_.back().values.Add(value);
  if (pieces_.size() < kMostPieces) return;
  per_piece_ *= 2;
  Merge(false);
  if (pieces_.size() > kMostPieces / 4 * 3) Merge(true);
}

void Envelope::Merge(bool over_breaks) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < pieces_.size(); ++i) {
    Piece piece = pieces_[i];
    if (i + 1 < pieces_.size() && (over_breaks || !pieces_[i + 1].broken)) {
      ++i;
      piece.end = pieces_[i].end;
      piece.values.Add(pieces_[i].values);
    }
    pieces_[kept++] = piece;
  }
  pieces_.resize(kept);
}

bool Sketch::IsWorthIt(const Point& point) const {
  if (points_.empty() || point.signal != points_.back().signal) return true;
  const Point& last = points_.back();
  return OffsetOf(last.latitude, last.longitude, point.latitude, point.longitude).Length() >= distance_;
}

void Sketch::Add(const Point& point) {
  last_ = point;
  held_break_ = held_break_ || point.broken;
  if (!IsWorthIt(point)) return;
  points_.push_back(point);
  points_.back().broken = held_break_;
  held_break_ = false;
  if (points_.size() >= kMostPoints) Thin();
}

void Sketch::Thin() {
  std::vector<Point> all;
  all.swap(points_);
  distance_ *= 2.0;
  for (const Point& point : all) {
    held_break_ = held_break_ || point.broken;
    if (!IsWorthIt(point)) continue;
    points_.push_back(point);
    points_.back().broken = held_break_;
    held_break_ = false;
  }
  if (points_.size() < kMostPoints / 4 * 3) return;
  // It changes its kind of fix all the time, or goes straight on.
  std::size_t kept = 0;
  for (std::size_t i = 0; i < points_.size(); i += 2) points_[kept++] = points_[i];
  points_.resize(kept);
}

void RunStatistics::Add(const PositionEpoch& epoch, const CGPSData& data) {
  if (!start || *epoch.time < *start) start = epoch.time;
  if (!end || *epoch.time > *end) end = epoch.time;
  ++epochs[epoch.signal];
  // A segment begins behind epochs without a fix as well, and then nothing has paused.
  const bool paused = epoch.starts_segment && (signals.empty() || signals.back().signal != UDF_SIGNAL_NONE);
  AddSignal(epoch, paused);
  in_view.Add(epoch.in_view);
  used.Add(*epoch.time, epoch.used, paused);
  if (data.m_dAverageSNR > 0.0) strength.Add(*epoch.time, data.m_dAverageSNR, paused);
  if (epoch.fix) AddFix(epoch);
}

void RunStatistics::AddFix(const PositionEpoch& epoch) {
  if (!first_fix) {
    first_fix = epoch;
    west = east = epoch.longitude;
  }
  ++fixes;
  if (epoch.starts_segment) ++segments;
  if (last_fix && epoch.time > last_fix->time) {
    longest_gap = std::max(longest_gap, *epoch.time - *last_fix->time);
    if (!epoch.starts_segment && epoch.speed.value_or(0.0) > 0.0) {
      moving += static_cast<double>(*epoch.time - *last_fix->time) / 1000.0;
    }
  }
  height.Add(*epoch.time, epoch.height, epoch.starts_segment);
  of_segment_ = epoch.starts_segment ? 1 : of_segment_ + 1;
  // A speed that is worked out from the last fixes is worked out across the gap at first.
  if (epoch.speed && (segments <= 1 || of_segment_ > kFixesOfSpeed)) {
    const bool first = of_segment_ == (segments <= 1 ? 1 : kFixesOfSpeed + 1);
    speed.Add(*epoch.time, *epoch.speed, first);
  }
  hdop.Add(epoch.hdop);
  pdop.Add(epoch.pdop);
  vdop.Add(epoch.vdop);
  south = std::min(south, epoch.latitude);
  north = std::max(north, epoch.latitude);
  const double longitude =
      first_fix->longitude + std::remainder(epoch.longitude - first_fix->longitude, 360.0);
  west = std::min(west, longitude);
  east = std::max(east, longitude);
  track.Add({epoch.latitude, longitude, epoch.signal, epoch.starts_segment});
  if (epoch.starts_segment || !anchor_) {
    anchor_ = epoch;
  } else if (const double step =
                 OffsetOf(anchor_->latitude, anchor_->longitude, epoch.latitude, epoch.longitude).Length();
             step >= kStep) {
    distance += step;
    anchor_ = epoch;
  }
  last_fix = epoch;
}

void RunStatistics::AddSignal(const PositionEpoch& epoch, bool paused) {
  const Moment time = *epoch.time;
  if (signals.empty() || paused || signals.back().signal != epoch.signal) {
    if (!signals.empty() && !paused) signals.back().end = std::max(signals.back().end, time);
    signals.push_back({time, time, epoch.signal});
  }
  signals.back().end = time;
  if (signals.size() < kMostSpans) return;
  // Of two neighbours the longer one stands for both.
  std::size_t kept = 0;
  for (std::size_t i = 0; i + 1 < signals.size(); i += 2) {
    const SignalSpan &a = signals[i], &b = signals[i + 1];
    signals[kept++] = {a.start, b.end, a.end - a.start >= b.end - b.start ? a.signal : b.signal};
  }
  signals.resize(kept);
}

void RunStatistics::AddSatellites(const CGPSData& data) {
  for (const auto& satellite : data.m_Satellites) {
    if (satellite.m_nPRN <= 0 || !satellite.m_bInView) continue;
    if (satellites.size() >= kMostSatellites && !satellites.contains(satellite.m_nPRN)) continue;
    SatelliteTrail& trail = satellites[satellite.m_nPRN];
    ++trail.seen;
    if (satellite.m_bUsed) ++trail.used;
    if (satellite.m_nSNR > 0) trail.strength.Add(satellite.m_nSNR);
    const SatelliteTrail::Place place{satellite.m_dElevation * kDegrees, satellite.m_dAzimuth * kDegrees};
    // Both are 0 where the receiver does not know yet.
    const bool known = place != SatelliteTrail::Place{0.0, 0.0} && place.elevation >= 0.0 &&
                       place.elevation <= 90.0 && std::fabs(place.azimuth) <= 360.0;
    if (!known || (!trail.places.empty() && trail.places.back() == place)) continue;
    trail.places.push_back(place);
    if (trail.places.size() > kMostPlaces) DropEverySecond(trail.places);
  }
}

}  // namespace host
