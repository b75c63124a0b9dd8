#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace host {

/// What a GGA sentence says behind its height, which records do not carry.
struct GgaTail {
  std::optional<double> separation;  ///< Metres that the geoid lies above the ellipsoid.
  std::string age, station;          ///< Of the corrections, as they stand there.
};

/// None for another sentence.
std::optional<GgaTail> GgaTailOf(std::string_view sentence);

}  // namespace host
