#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "gpsengine/face/fix.h"
#include "gpsengine/face/report.h"
#include "gpsengine/rawdata/rawdata.h"
#include "gpsengine/sentences/sky.h"

#pragma GCC visibility push(default)

namespace gps {

/// Raw data for post-processing: one block of measurements or of an ephemeris. What a block holds that is not
/// read here has neither, and its words alone.
struct Raw {
  std::string name;                  ///< "$BIN 96", "OEM 43", "MBN" or "SNV".
  std::vector<std::uint16_t> words;  ///< The block, the earlier byte of each in its low half; empty for
                                     ///< Ashtech's, which arrive in pieces.
  std::optional<rawdata::ObservationEpoch> epoch;        ///< All signals of a moment.
  std::optional<rawdata::BroadcastEphemeris> ephemeris;  ///< Of one satellite.
};

/// Whatever a receiver tells, in the order in which it came.
using Record = std::variant<Fix, Sky, Report, Raw>;

/// The index of a type among them; std::variant_npos for Record itself.
template <class T>
constexpr std::size_t AlternativeOf() {
  if constexpr (std::is_same_v<T, Record>) {
    return std::variant_npos;
  } else {
    return []<class... Each>(std::type_identity<std::variant<Each...>>) {
      std::size_t index = 0;
      (void)((std::is_same_v<T, Each> || (++index, false)) || ...);
      return index;
    }(std::type_identity<Record>());
  }
}

}  // namespace gps

#pragma GCC visibility pop
