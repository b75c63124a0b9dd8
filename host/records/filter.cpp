#include "host/records/filter.h"

#include <cmath>

namespace host {

namespace {

// Less than this an epoch may come early and still be due.
constexpr std::chrono::milliseconds kTolerance(20);

std::chrono::milliseconds Milliseconds(double seconds) {
  return std::chrono::milliseconds(std::llround(seconds * 1000.0));
}

}  // namespace

bool Filter::IsDue(const PositionEpoch& epoch) const {
  // That a fix is lost or found again is news at any time and place.
  if (!passed_ || epoch.valid != passed_->valid) return true;
  if (options_.min_interval > 0.0 && epoch.time && passed_->time) {
    const auto since = *epoch.time - *passed_->time;
    if (since.count() >= 0 && since < Milliseconds(options_.min_interval) - kTolerance) return false;
  }
  if (options_.min_distance <= 0.0) return true;
  const Offset way = OffsetOf(passed_->latitude, passed_->longitude, epoch.latitude, epoch.longitude);
  return epoch.valid && way.Length() >= options_.min_distance;
}

void Filter::Pass(Record& record) {
  PositionEpoch& epoch = record.epoch;
  if (epoch.time && options_.duration > 0.0) {
    if (!first_) first_ = epoch.time;
    over_ = over_ || *epoch.time - *first_ > Milliseconds(options_.duration);
  }
  record.kinds = over_ ? Kinds() : record.kinds & options_.only;
  const bool thins = options_.min_interval > 0.0 || options_.min_distance > 0.0;
  if (!record.HasPosition() || !thins) return;
  epoch.starts_segment = epoch.starts_segment || held_start_;
  held_start_ = false;
  if (IsDue(epoch)) {
    passed_ = epoch;
    return;
  }
  held_start_ = epoch.starts_segment;
  record.kinds = record.kinds & Kinds(Kind::report);  // what is news of its own
}

}  // namespace host
