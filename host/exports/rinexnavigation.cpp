#include <iterator>

#include "gpsengine/face/words.h"
#include "host/exports/rinexformat.h"
#include "host/exports/rinextext.h"

namespace host {

namespace {

// The pi of IS-GPS-200, by which a semicircle becomes radians.
constexpr double kGpsPi = 3.1415926535898;

/// The hours that an ephemeris is fitted over, by IS-GPS-200, table 20-XII: beyond four the issue of the
/// clock tells them.
double FitHours(bool is_long, int issue) {
  static constexpr struct {
    int first, last;
    double hours;
  } kLong[] = {{240, 247, 8.0}, {248, 255, 14.0}, {496, 496, 14.0}, {497, 503, 26.0}, {1021, 1023, 26.0}};
  if (!is_long) return 4.0;
  for (const auto& [first, last, hours] : kLong) {
    if (issue >= first && issue <= last) return hours;
  }
  return 6.0;
}

std::string FirstLine(RinexVersion version, const CGPSDataEphemeris& e, const GpsTime& toc) {
  const Calendar c = CalendarOf(toc, 1);
  std::string text;
  if (version == RinexVersion::v2_11) {
    text += Print("%2d %02d %2d %2d %2d %2d%5.1f", e.m_nPRN, c.year % 100, c.month, c.day, c.hour, c.minute,
                  c.second);
  } else {
    text += Print("G%02d %04d %02d %02d %02d %02d %02.0f", e.m_nPRN, c.year, c.month, c.day, c.hour, c.minute,
                  c.second);
  }
  for (const double value : {e.m_dAf0, e.m_dAf1, e.m_dAf2}) AppendTerm(text, value);
  return text + '\n';
}

}  // namespace

std::string NavigationHeader(RinexVersion version, bool has_state) {
  std::string header = version == RinexVersion::v2_11 ? FileBeginning(2.11, "N: GPS NAV DATA")
                                                      : FileBeginning(3.04, "N: GNSS NAV DATA    G: GPS");
  if (!has_state) header += HeaderLine("ACCURACY, HEALTH AND FIT INTERVAL ARE NOT KNOWN", "COMMENT");
  return header + HeaderLine("", "END OF HEADER");
}

// Angles and their rates come in semicircles, as satellites broadcast them, and go out in radians. The
// corrections are broadcast in radians and metres, all times in seconds.
std::string NavigationRecord(RinexVersion version, const RinexEphemeris& ephemeris) {
  const rawdata::BroadcastEphemeris& told = ephemeris.told;
  const CGPSDataEphemeris& e = told.orbit;
  const double fit = ephemeris.has_state ? FitHours(told.long_fit, e.m_lAodc) : 0.0;
  const double terms[][4] = {
      {static_cast<double>(e.m_lAode), e.m_dCrs, e.m_dDeltaN * kGpsPi, e.m_dM0 * kGpsPi},
      {e.m_dCuc, e.m_dEccentricity, e.m_dCus, e.m_dSqrtA},
      {ephemeris.toe.seconds, e.m_dCic, e.m_dOmega0 * kGpsPi, e.m_dCis},
      {e.m_dI0 * kGpsPi, e.m_dCrc, e.m_dOmega * kGpsPi, e.m_dOmegaDot * kGpsPi},
      {e.m_dIDot * kGpsPi, static_cast<double>(told.codes_on_l2), static_cast<double>(ephemeris.toe.week),
       told.l2p_without_data ? 1.0 : 0.0},
      {told.accuracy, static_cast<double>(told.health), e.m_dTgd, static_cast<double>(e.m_lAodc)},
      {ephemeris.sent, fit},
  };
  std::string text = FirstLine(version, e, ephemeris.toc);
  for (const auto& line : terms) {
    text += version == RinexVersion::v2_11 ? "   " : "    ";
    const std::size_t count = &line == std::end(terms) - 1 ? 2 : std::size(line);
    for (std::size_t i = 0; i < count; ++i) AppendTerm(text, line[i]);
    text += '\n';
  }
  return text;
}

}  // namespace host
