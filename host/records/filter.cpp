#include "host/records/filter.h"

#include <cmath>

namespace host {

namespace {

// Less than this an epoch may come early and still be due.
constexpr Moment kTolerance = 20;

/// What a record carries. One that carries nothing of the kind, such as the answer to nothing at all, is a
/// report.
Kinds KindsOf(const CGPSData& data) {
  Kinds kinds;
  if (data.m_bPositionValid) kinds.Add(Kind::fix);
  if (data.m_bSatellitesComplete && data.m_bSatellitesChanged) kinds.Add(Kind::satellites);
  if (data.m_Status.m_bStatusUpdated || data.m_bProprietaryValid || kinds.IsEmpty()) kinds.Add(Kind::report);
  return kinds;
}

Moment Milliseconds(double seconds) {
  return std::llround(seconds * 1000.0);
}

}  // namespace

bool Filter::IsDue(const PositionEpoch& epoch) const {
  // That a fix is lost or found again is news at any time and place.
  if (!passed_ || epoch.fix != passed_->fix) return true;
  if (options_.min_interval > 0.0 && epoch.time && passed_->time) {
    const Moment since = *epoch.time - *passed_->time;
    if (since >= 0 && since < Milliseconds(options_.min_interval) - kTolerance) return false;
  }
  if (options_.min_distance <= 0.0) return true;
  const Offset way = OffsetOf(passed_->latitude, passed_->longitude, epoch.latitude, epoch.longitude);
  return epoch.fix && way.Length() >= options_.min_distance;
}

Kinds Filter::Pass(const CGPSData& data, PositionEpoch* epoch) {
  if (epoch != nullptr && epoch->time && options_.duration > 0.0) {
    if (!first_) first_ = epoch->time;
    over_ = over_ || *epoch->time - *first_ > Milliseconds(options_.duration);
  }
  if (over_) return {};
  const Kinds kinds = KindsOf(data) & options_.only;
  if (epoch == nullptr || !kinds.Has(Kind::fix)) return kinds;
  epoch->starts_segment = epoch->starts_segment || held_start_;
  held_start_ = false;
  if (IsDue(*epoch)) {
    passed_ = *epoch;
    return kinds;
  }
  held_start_ = epoch->starts_segment;
  Kinds rest;  // what is news of its own
  if (kinds.Has(Kind::report)) rest.Add(Kind::report);
  return rest;
}

}  // namespace host
