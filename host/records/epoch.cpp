#include "host/records/epoch.h"

#include <algorithm>
#include <cmath>

#include "host/records/units.h"

namespace host {

namespace {

// A track breaks off where nothing came for this long, and for several of the receiver's own intervals.
constexpr Moment kShortestGap = 10'000;
constexpr Moment kStepsOfGap = 4;

bool IsOnEarth(double latitude, double longitude, double height) {
  return std::fabs(latitude) <= 90.0 && std::fabs(longitude) <= 180.0 && std::fabs(height) < 1e8;
}

/// What a record carries. One that carries nothing of the kind, such as the answer to nothing at all, is a
/// report.
Kinds KindsOf(const CGPSData& data) {
  Kinds kinds;
  if (data.m_bPositionValid) kinds.Add(Kind::fix);
  if (data.m_bSatellitesComplete && data.m_bSatellitesChanged) kinds.Add(Kind::satellites);
  if (data.m_Status.m_bStatusUpdated || data.m_bProprietaryValid || kinds.IsEmpty()) kinds.Add(Kind::report);
  return kinds;
}

}  // namespace

bool HasTimeOfDay(const CGPSData& data) {
  const bool in_range = data.m_dTimeOfDay >= 0.0 && data.m_dTimeOfDay < 86'401.0;  // a leap second counts
  return in_range && (data.m_dTimeOfDay > 0.0 || data.m_nSignalType != UDF_SIGNAL_NONE);
}

double Offset::Length() const {
  return std::hypot(east, north);
}

Offset OffsetOf(double latitude, double longitude, double to_latitude, double to_longitude) {
  constexpr double kAxis = 6378137.0, kFlattening = 1.0 / 298.257223563,
                   kE2 = kFlattening * (2.0 - kFlattening);
  const double middle = (latitude + to_latitude) / 2.0 / kDegrees;
  const double w2 = 1.0 - kE2 * std::sin(middle) * std::sin(middle);
  const double meridian = kAxis * (1.0 - kE2) / (w2 * std::sqrt(w2));
  const double parallel = kAxis / std::sqrt(w2) * std::cos(middle);
  const double turn = std::remainder(to_longitude - longitude, 360.0);  // the short way round
  return {turn / kDegrees * parallel, (to_latitude - latitude) / kDegrees * meridian};
}

Moment EpochReader::Date(const CGPSData& data) {
  const Moment published = data.m_Time.GetTime() * 1000;
  Moment near = published;
  if (reference_ && reference_ != used_reference_) {
    near = *reference_;
    used_reference_ = reference_;
  } else if (last_time_) {
    // Past midnight too, of a recording that has no date, and over a pause of a receiver that has.
    near = *last_time_ + (published - last_published_);
  } else if (reference_) {
    near = *reference_;
  }
  last_published_ = published;
  return DateTimeOfDay(data.m_dTimeOfDay, near);
}

bool EpochReader::IsBehindGap(const PositionEpoch& epoch) {
  if (!last_time_) return true;
  const Moment step = *epoch.time - *last_time_;
  const bool gap = step < 0 || step > std::max(kShortestGap, kStepsOfGap * step_);
  if (step > 0) step_ = step;
  return gap || !last_was_fix_;
}

Record EpochReader::Read(const CGPSData& data) {
  Record record{data, KindsOf(data), {}};
  PositionEpoch& epoch = record.epoch;
  if (data.m_bDOPValid) {
    epoch.hdop = KnownDilution(data.m_dHDOP);
    epoch.pdop = KnownDilution(data.m_dPDOP);
    epoch.vdop = KnownDilution(data.m_dVDOP);
  }
  if (record.HasPosition()) ReadPosition(data, epoch);
  return record;
}

void EpochReader::ReadPosition(const CGPSData& data, PositionEpoch& epoch) {
  epoch.latitude = data.m_dLatitude * kDegrees;
  epoch.longitude = data.m_dLongitude * kDegrees;
  epoch.height = epoch.height_msl = data.m_dAltitude;
  epoch.fix =
      data.m_nSignalType != UDF_SIGNAL_NONE && IsOnEarth(epoch.latitude, epoch.longitude, data.m_dAltitude);
  if (epoch.fix) epoch.signal = data.m_nSignalType;
  epoch.used = data.m_nSatellitesUsed;
  epoch.in_view = data.m_nSatellitesInView;
  if (data.m_dAverageSNR > 0.0) epoch.strength = data.m_dAverageSNR;
  if (epoch.fix && data.m_bVelocityValid && data.m_dSpeed >= 0.0 && data.m_dSpeed < 1e5) {
    epoch.speed = data.m_dSpeed;
    // The record counts from east, anticlockwise. A speed of 0 stands for one too small to have a direction.
    const double course = 450.0 - data.m_dHeading * kDegrees;
    if (data.m_dSpeed > 0.0 && std::isfinite(course)) {
      epoch.course = course - 360.0 * std::floor(course / 360.0);
    }
  }
  if (!HasTimeOfDay(data)) return;
  epoch.time_of_day = data.m_dTimeOfDay;
  epoch.time = Date(data);
  epoch.repeats = last_time_ == epoch.time && (last_was_fix_ || !epoch.fix);
  if (epoch.repeats) return;
  epoch.starts_segment = IsBehindGap(epoch) && epoch.fix;
  last_time_ = epoch.time;
  last_was_fix_ = epoch.fix;
}

}  // namespace host
