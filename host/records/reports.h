#pragma once

#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "gpsengine/records/gpsdata.h"

namespace host {

/// "none", "beacon", "lband", "waas", "cdgps" or "omnistar"; "unknown" for another value.
std::string_view NameOf(DgpsMode mode);

/// A setting that a receiver has reported. Its texts are those of the record.
struct Report {
  std::string_view key;    ///< For programs.
  std::string_view label;  ///< For people.
  std::variant<bool, int, double, std::string_view> value;
  std::string_view unit = "";  ///< For people.
};

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

}  // namespace host
