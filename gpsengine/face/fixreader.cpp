#include "gpsengine/face/fixreader.h"

#include <algorithm>
#include <cmath>

namespace gps {

namespace {

// A track breaks off where nothing came for this long, and for several of the receiver's own intervals.
constexpr std::chrono::milliseconds kShortestGap = std::chrono::seconds(10);
constexpr int kStepsOfGap = 4;

bool IsOnEarth(double latitude, double longitude, double height) {
  return std::fabs(latitude) <= 90.0 && std::fabs(longitude) <= 180.0 && std::fabs(height) < 1e8;
}

}  // namespace

bool HasTimeOfDay(const CGPSData& data) {
  const bool in_range = data.m_dTimeOfDay >= 0.0 && data.m_dTimeOfDay < 86'401.0;  // a leap second counts
  return in_range && (data.m_dTimeOfDay > 0.0 || data.m_nSignalType != UDF_SIGNAL_NONE);
}

Time FixReader::Date(const CGPSData& data) {
  const Time published = MomentOf(data.m_Time);
  Time near = published;
  if (reference_ && reference_ != used_reference_) {
    near = *reference_;
    used_reference_ = reference_;
  } else if (last_time_) {
    // Past midnight too, of a recording that has no date, and over a pause of a receiver that has.
    near = *last_time_ + (published - last_published_);
  }
  last_published_ = published;
  return DateTimeOfDay(data.m_dTimeOfDay, near);
}

bool FixReader::IsBehindGap(const Fix& fix) {
  if (!last_time_) return true;
  const auto step = *fix.time - *last_time_;
  const bool gap = step.count() < 0 || step > std::max(kShortestGap, kStepsOfGap * step_);
  if (step.count() > 0) step_ = step;
  return gap || !last_was_fix_;
}

Fix FixReader::Read(const CGPSData& data) {
  Fix fix;
  if (data.m_bDOPValid) {
    fix.hdop = KnownDilution(data.m_dHDOP);
    fix.pdop = KnownDilution(data.m_dPDOP);
    fix.vdop = KnownDilution(data.m_dVDOP);
  }
  if (data.m_bPositionValid) ReadPosition(data, fix);
  return fix;
}

void FixReader::ReadPosition(const CGPSData& data, Fix& fix) {
  fix.latitude = data.m_dLatitude * kDegrees;
  fix.longitude = data.m_dLongitude * kDegrees;
  fix.height_msl = data.m_dAltitude;
  fix.valid =
      data.m_nSignalType != UDF_SIGNAL_NONE && IsOnEarth(fix.latitude, fix.longitude, data.m_dAltitude);
  if (fix.valid) fix.signal = data.m_nSignalType;
  fix.used = data.m_nSatellitesUsed;
  fix.in_view = data.m_nSatellitesInView;
  if (data.m_dAverageSNR > 0.0) fix.strength = data.m_dAverageSNR;
  if (fix.valid && data.m_bVelocityValid && data.m_dSpeed >= 0.0 && data.m_dSpeed < 1e5) {
    fix.speed = data.m_dSpeed;
    // The record counts from east, anticlockwise. A speed of 0 stands for one too small to have a direction.
    const double course = 450.0 - data.m_dHeading * kDegrees;
    if (data.m_dSpeed > 0.0 && std::isfinite(course)) {
      fix.course = course - 360.0 * std::floor(course / 360.0);
    }
  }
  if (!HasTimeOfDay(data)) return;
  fix.time_of_day = data.m_dTimeOfDay;
  fix.time = Date(data);
  fix.repeats = last_time_ == fix.time && (last_was_fix_ || !fix.valid);
  if (fix.repeats) return;
  fix.starts_segment = IsBehindGap(fix) && fix.valid;
  last_time_ = fix.time;
  last_was_fix_ = fix.valid;
}

}  // namespace gps
