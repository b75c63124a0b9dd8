#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

/// A stream that a caster offers.
struct MountPoint {
  std::string name, identifier, format, details, carrier, systems, country, authentication;
  std::optional<double> latitude, longitude;  ///< Degrees, of the base or of the network's middle.
  bool needs_gga = false;                     ///< It wants to know where the receiver is.
  bool has_fee = false;
  std::optional<double> distance;  ///< Kilometres from where the user is.
};

/// Latitude and longitude, in degrees.
using Degrees2 = std::pair<double, double>;
/// "47.6,9.4".
std::optional<Degrees2> PlaceOf(const std::string& text);

/// The mount points of a caster's table, the nearest first if it is known where the user is. Lines that are
/// none are passed over, and fields that are missing are empty.
std::vector<MountPoint> MountPointsOf(std::string_view table, const std::optional<Degrees2>& near);

std::string MountPointsAsTable(const std::vector<MountPoint>& points);
std::string MountPointsAsJson(const std::vector<MountPoint>& points);

}  // namespace host
