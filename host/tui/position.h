#pragma once

#include <string>

namespace host {

/// How a screen writes latitudes and longitudes.
enum class PositionFormat { degrees, minutes, seconds };
constexpr int kPositionFormats = 3;

/// An angle as "47.6198855° N", "47° 37.19313' N" or "47° 37' 11.5878\" N", every one of a format as wide as
/// the others.
std::string AngleText(double radians, PositionFormat format, char positive, char negative);

}  // namespace host
