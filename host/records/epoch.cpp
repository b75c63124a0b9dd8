#include "host/records/epoch.h"

#include <cmath>

namespace host {

namespace {

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

Record ReadRecord(FixReader& reader, const CGPSData& data) {
  return {data, KindsOf(data), PositionEpoch(reader.Read(data))};
}

}  // namespace host
