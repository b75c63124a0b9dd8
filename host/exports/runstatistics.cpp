#include "host/exports/runstatistics.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/records/units.h"

namespace host {

namespace {

// More than these a drawing does not show.
constexpr std::size_t kMostPieces = 1200;
constexpr std::size_t kMostSpans = 400;
constexpr std::size_t kMostPlaces = 400;
constexpr double kTrailStep = 2.0;  // degrees
constexpr std::size_t kMostSatellites = 200;
// Metres. Shorter steps are the receiver's noise, which adds up.
constexpr double kStep = 1.0;
constexpr long long kFixesOfSpeed = 3;

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

void RunStatistics::Add(const PositionEpoch& epoch) {
  if (!start || *epoch.time < *start) start = epoch.time;
  if (!end || *epoch.time > *end) end = epoch.time;
  ++epochs[epoch.signal];
  undated = undated || epoch.undated;
  // A segment begins after epochs without a fix as well, and then nothing has paused.
  const bool paused = epoch.starts_segment && (signals.empty() || signals.back().signal != UDF_SIGNAL_NONE);
  AddSignal(epoch, paused);
  in_view.Add(epoch.in_view);
  used.Add(*epoch.time, epoch.used, paused);
  if (epoch.strength) strength.Add(*epoch.time, *epoch.strength, paused);
  if (epoch.valid) AddFix(epoch);
}

void RunStatistics::AddFix(const PositionEpoch& epoch) {
  if (!first_fix) {
    first_fix = epoch;
    plane_.emplace(epoch.latitude, epoch.longitude);
  }
  ++fixes;
  survey.Add(epoch);
  if (epoch.starts_segment) ++segments;
  if (last_fix && epoch.time > last_fix->time) {
    longest_gap = std::max(longest_gap, *epoch.time - *last_fix->time);
    if (!epoch.starts_segment && epoch.speed.value_or(0.0) > 0.0) {
      moving += gps::Seconds(*epoch.time - *last_fix->time);
    }
  }
  if (epoch.height) height.Add(*epoch.time, *epoch.height, epoch.starts_segment);
  of_segment_ = epoch.starts_segment ? 1 : of_segment_ + 1;
  // A speed that is worked out from the last fixes is worked out across the gap at first.
  if (epoch.speed && (segments <= 1 || of_segment_ > kFixesOfSpeed)) {
    const bool first = of_segment_ == (segments <= 1 ? 1 : kFixesOfSpeed + 1);
    speed.Add(*epoch.time, *epoch.speed, first);
  }
  hdop.Add(epoch.hdop);
  pdop.Add(epoch.pdop);
  vdop.Add(epoch.vdop);
  const Offset place = plane_->Of(epoch.latitude, epoch.longitude);
  track.Add({place.east, place.north, epoch.signal, epoch.starts_segment});
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
  if (signals.empty() || paused || signals.back().signal != epoch.signal || !signals.back().mixed.empty()) {
    if (!signals.empty() && !paused) signals.back().end = std::max(signals.back().end, time);
    signals.push_back({time, time, epoch.signal});
  }
  signals.back().end = time;
  if (signals.size() < kMostSpans) return;
  for (MergeSpans(); signals.size() > kMostSpans / 2; MergeSpans()) span_ *= 2;
}

/// Makes one of all spans of a time that a drawing shows as one.
void RunStatistics::MergeSpans() {
  std::size_t kept = 0;
  for (std::size_t first = 0, next; first < signals.size(); first = next) {
    const Moment from = signals[first].start;
    std::map<int, std::chrono::milliseconds> times;
    for (next = first; next == first || (next < signals.size() && signals[next].end - from <= span_);
         ++next) {
      const SignalSpan& span = signals[next];
      if (span.mixed.empty()) times[span.signal] += span.end - span.start;
      for (const auto& [signal, time] : span.mixed) times[signal] += time;
    }
    const SignalSpan& last = signals[next - 1];
    if (times.size() == 1) times.clear();
    signals[kept++] = {from, last.end, last.signal, std::move(times)};
  }
  signals.resize(kept);
}

void SatelliteTrail::Add(const Place& place) {
  last = place;
  if (!places.empty()) {
    // As a map of the sky has it, where azimuths lie close together towards the zenith.
    const double turn = std::remainder(place.azimuth - places.back().azimuth, 360.0) / kDegrees;
    const double way = std::hypot(place.elevation - places.back().elevation, turn * (90.0 - place.elevation));
    if (way < kTrailStep) return;
  }
  places.push_back(place);
  if (places.size() > kMostPlaces) places.erase(places.begin());
}

void RunStatistics::AddSatellites(const Sky& sky) {
  for (const Satellite& satellite : sky.satellites) {
    if (satellites.size() >= kMostSatellites && !satellites.contains(satellite.id)) continue;
    SatelliteTrail& trail = satellites[satellite.id];
    ++trail.seen;
    if (satellite.used) ++trail.used;
    if (satellite.signal) trail.strength.Add(*satellite.signal);
    if (satellite.azimuth && satellite.elevation.value_or(-1) >= 0) {
      trail.Add({static_cast<double>(*satellite.elevation), static_cast<double>(*satellite.azimuth)});
    }
  }
}

}  // namespace host
