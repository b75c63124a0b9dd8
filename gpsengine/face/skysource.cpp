#include "gpsengine/face/skysource.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gpsengine/face/fixreader.h"

namespace gps {

namespace {

int Degrees(double radians) {
  return static_cast<int>(std::lround(radians * kDegrees));
}

bool IsSane(double angle) {
  return std::fabs(angle) <= 2.0 * std::numbers::pi;
}

/// What is not known is 0 in a record, and both angles are.
Satellite SatelliteIn(const CGPSSatelliteData& slot) {
  Satellite satellite{.id = SatelliteOf(slot.m_nPRN), .used = slot.m_bUsed};
  const bool is_placed = slot.m_dElevation != 0.0 || slot.m_dAzimuth != 0.0;
  if (is_placed && IsSane(slot.m_dElevation) && IsSane(slot.m_dAzimuth)) {
    satellite.elevation = Degrees(slot.m_dElevation);
    satellite.azimuth = Degrees(slot.m_dAzimuth);
  }
  if (slot.m_nSNR > 0) satellite.signal = slot.m_nSNR;
  return satellite;
}

}  // namespace

Sky SkySource::SkyOf(const CGPSData& data) const {
  Sky sky;
  sky.has_list = data.m_bSatellitesComplete && data.m_bSatellitesChanged;
  sky.has_used = tells_used_;
  sky.in_view = data.m_nSatellitesInView;
  if (tells_count_) sky.used = data.m_nSatellitesUsed;
  sky.hdop = KnownDilution(data.m_dHDOP);
  sky.pdop = KnownDilution(data.m_dPDOP);
  sky.vdop = KnownDilution(data.m_dVDOP);
  if (HasTimeOfDay(data)) sky.time_of_day = data.m_dTimeOfDay;
  if (!sky.has_list) return sky;
  for (const CGPSSatelliteData& slot : data.m_Satellites) {
    if (slot.m_nPRN > 0 && slot.m_bInView) sky.satellites.push_back(SatelliteIn(slot));
  }
  std::sort(sky.satellites.begin(), sky.satellites.end(),
            [](const auto& a, const auto& b) { return a.id < b.id; });
  return sky;
}

const Sky* SkySource::OnData(const CGPSData& data) {
  const Sky* const sky = Release();  // its text was missed
  if (!sentences_.HasGroups()) Hold(data);
  return sky;
}

const Sky* SkySource::OnText(const Fields& text) {
  const bool is_new = sentences_.Read(text);
  if (!sentences_.HasGroups()) return Release();
  held_.reset();
  return is_new ? &sentences_.Latest() : nullptr;
}

const Sky* SkySource::Finish() {
  if (const Sky* const sky = Release()) return sky;
  return sentences_.Finish() ? &sentences_.Latest() : nullptr;
}

const Sky* SkySource::Release() {
  if (!held_) return nullptr;
  released_ = std::exchange(held_, std::nullopt);
  return &*released_;
}

void SkySource::Hold(const CGPSData& data) {
  tells_count_ = tells_count_ || data.m_bPositionValid || data.m_nSatellitesUsed > 0;
  tells_used_ = tells_used_ || std::any_of(std::begin(data.m_Satellites), std::end(data.m_Satellites),
                                           [](const auto& slot) { return slot.m_bUsed; });
  Sky sky = SkyOf(data);
  if (sky.has_list) {
    // The record of a position repeats the satellites of the one before it.
    const bool repeats = data.m_bPositionValid && released_ && released_->satellites == sky.satellites;
    if (repeats) return;
  } else {
    // A receiver that sends no satellites with its positions still has its dilution and its count shown.
    if (!data.m_bPositionValid || !data.m_bDOPValid || (released_ && released_->has_list)) return;
    if (!std::exchange(had_position_, true)) return;
  }
  held_ = std::move(sky);
}

}  // namespace gps
