#include "host/records/reports.h"

namespace host {

std::string_view NameOf(DgpsMode mode) {
  constexpr std::string_view kNames[] = {"none", "beacon", "lband", "waas", "cdgps", "omnistar"};
  return mode >= 0 && mode < static_cast<int>(std::size(kNames)) ? kNames[mode] : "unknown";
}

}  // namespace host
