#include "host/records/reports.h"

namespace host {

namespace {

template <std::size_t N>
std::string_view Pick(const std::string_view (&names)[N], int index, std::string_view fallback) {
  return index >= 0 && index < static_cast<int>(N) ? names[index] : fallback;
}

}  // namespace

std::string_view NameOf(DgpsMode mode) {
  constexpr std::string_view kNames[] = {"none", "beacon", "lband", "waas", "cdgps", "omnistar"};
  return Pick(kNames, mode, "unknown");
}

bool HasTimeOfDay(const CGPSData& data) {
  const bool in_range = data.m_dTimeOfDay >= 0.0 && data.m_dTimeOfDay < 86'401.0;  // a leap second counts
  return in_range && (data.m_dTimeOfDay > 0.0 || data.m_nSignalType != UDF_SIGNAL_NONE);
}

}  // namespace host
