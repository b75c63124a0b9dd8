#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "gpsengine/records/gpsdata.h"

#pragma GCC visibility push(default)

namespace gps {

/// "none", "beacon", "lband", "waas", "cdgps" or "omnistar"; "unknown" for another value.
std::string_view NameOf(DgpsMode mode);

/// A setting that a receiver has reported, or what else it has said of itself.
struct Report {
  std::string_view key;    ///< For programs: "elevationMask", "nmeaGGA", "text", "ack" …
  std::string_view label;  ///< For people: "elevation mask".
  std::variant<bool, int, double, std::string> value;  ///< In the unit below.
  std::string_view unit = "";                          ///< "deg", "kHz" …; empty for none.
};
/// Writes "elevation mask 10 deg".
std::ostream& operator<<(std::ostream& out, const Report& report);

/// Finds what a published record has of news from the receiver's reports.
class ReportReader {
 public:
  /// The settings that arrived with this record, in the order in which they are told.
  std::vector<Report> NewsIn(const CGPSData& data);

 private:
  struct PositionMode {
    double fixed_altitude;
    int mode, pdop_mask, hdop_mask, vdop_mask;
    bool operator==(const PositionMode&) const = default;
  };

  void AddPositionMode(const CGPSStatusData& status, std::vector<Report>& news);

  std::optional<PositionMode> position_mode_;  // the last one seen
};

}  // namespace gps

#pragma GCC visibility pop
