#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "gpsengine/receiver/decoders.h"
#include "gpsengine/text/parser.h"

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr int kGroupsInGsv = 4;
constexpr double kKmhPerMetreASecond = 3.6;

constexpr double ComputeRadians(int degrees) {
  return degrees * std::numbers::pi / 180.0;
}

// Of the degrees of a circle, so that a satellite costs no divisions.
constexpr auto kRadians = [] {
  std::array<double, 361> radians{};
  for (int degrees = 0; degrees < static_cast<int>(radians.size()); ++degrees)
    radians[static_cast<std::size_t>(degrees)] = ComputeRadians(degrees);
  return radians;
}();

double Radians(int degrees) {
  const auto index = static_cast<std::size_t>(degrees);
  return index < kRadians.size() ? kRadians[index] : ComputeRadians(degrees);
}

// A course over ground in degrees to a mathematical angle from 0 to 2π.
double HeadingOfCourse(double course) {
  const double turned = (450.0 - course) * std::numbers::pi / 180.0;
  // Within two turns the remainder is a difference, which is exact as well.
  if (turned >= 0.0 && turned < 2.0 * kTwoPi) return turned < kTwoPi ? turned : turned - kTwoPi;
  // Near the largest double the product with π overflows.
  const double all = std::isfinite(turned) ? turned : (450.0 - course) / 180.0 * std::numbers::pi;
  const double angle = std::fmod(all, kTwoPi);
  return angle < 0.0 ? angle + kTwoPi : angle;
}

template <class Condition>
bool FirstSlot(const CGPSData& record, int& slot, Condition condition) {
  for (int i = 0; i < kSatelliteSlots; ++i) {
    if (!condition(record.m_Satellites[i])) continue;
    slot = i;
    return true;
  }
  return false;
}

// A satellite of a GSV sentence: the elevation and azimuth in whole degrees, the signal, which may be empty.
struct SatelliteGroup {
  int nPRN;
  double dElevation, dAzimuth;
  int nSNR;

  bool Read(CParser& parser) {
    int degrees = 0;
    if (!parser.GetInt(nPRN) || !parser.GetInt(degrees)) return false;
    dElevation = Radians(degrees);
    if (!parser.GetInt(degrees)) return false;
    dAzimuth = Radians(degrees);
    if (!parser.GetInt(nSNR)) nSNR = 0;
    return true;
  }
};

}  // namespace

bool CWorkingState::GetSatellite(int number, int& slot) const {
  return FirstSlot(record, slot, [number](const auto& each) { return each.m_nPRN == number; });
}

bool CWorkingState::GetEmptySatellite(int& slot) const {
  return FirstSlot(record, slot, [](const auto& each) { return each.m_nPRN == 0; });
}

bool CWorkingState::GetUnusedSatellite(int& slot) const {
  return FirstSlot(record, slot, [](const auto& each) { return !each.m_bUsed; });
}

bool CWorkingState::FindSlot(int number, int& slot) const {
  return GetSatellite(number, slot) || GetEmptySatellite(slot) || GetUnusedSatellite(slot);
}

void CWorkingState::ComputeAverageSNR() {
  std::int64_t sum = 0;
  int count = 0;
  for (const CGPSSatelliteData& slot : record.m_Satellites) {
    sum += slot.m_bUsed ? slot.m_nSNR : 0;
    count += slot.m_bUsed;
  }
  record.m_dAverageSNR = count == 0 ? 0.0 : static_cast<double>(sum) / count;
}

bool CGPSReceiver::GetSatellite(int number, int& slot) {
  return RecordLock()->GetSatellite(number, slot);
}

bool CGPSReceiver::GetEmptySatellite(int& slot) {
  return RecordLock()->GetEmptySatellite(slot);
}

bool CGPSReceiver::GetUnusedSatellite(int& slot) {
  return RecordLock()->GetUnusedSatellite(slot);
}

// $GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1*39
bool CDecoders::GSA(const CDecoding& in) {
  CGPSData& data = in.state.record;
  CParser parser(CParser::InPlace(in.message), ",*", false);
  parser.SkipField();
  parser.SkipField();
  parser.SkipField();
  for (CGPSSatelliteData& slot : data.m_Satellites) slot.m_bUsed = false;
  for (int field = 0; field < kSatelliteSlots; ++field) {
    int number = 0;
    int slot = 0;
    if (!parser.GetInt(number) || !in.state.FindSlot(number, slot)) continue;
    CGPSSatelliteData& satellite = data.m_Satellites[slot];
    satellite.m_nPRN = number;
    satellite.m_bUsed = satellite.m_bInView = true;
    data.m_bSatellitesChanged = true;
  }
  parser.GetDouble(data.m_dPDOP);
  parser.GetDouble(data.m_dHDOP);
  data.m_bDOPValid = true;
  parser.GetDouble(data.m_dVDOP);
  return true;
}

// $GPGSV,2,1,08,01,40,083,46,02,17,308,41,12,07,344,39,14,22,228,45*75
bool CDecoders::GSV(const CDecoding& in) {
  CGPSData& data = in.state.record;
  data.m_bSatellitesComplete = false;
  CParser parser(CParser::InPlace(in.message), ",*", false);
  parser.SkipField();
  int total = 0;
  int number = 0;
  if (!parser.GetInt(total)) return InvalidSentence("GSV");
  in.state.totalGsv = total;
  if (!parser.GetInt(number)) return InvalidSentence("GSV");
  // Sentence 1 is good at any time: it restarts the group.
  if (number != in.state.nextGsv && number != 1) {
    in.state.nextGsv = 1;
    return false;
  }
  if (number == 1) {
    for (CGPSSatelliteData& slot : data.m_Satellites) slot.m_bInView = false;
  }
  const bool last = number == total;
  in.state.nextGsv = number < total ? number + 1 : 1;
  if (!parser.GetInt(data.m_nSatellitesInView)) return InvalidSentence("GSV");

  SatelliteGroup group;
  for (int i = 0; i < kGroupsInGsv && group.Read(parser); ++i) {
    int slot = 0;
    const bool known = in.state.GetSatellite(group.nPRN, slot);
    if (!known && !in.state.GetEmptySatellite(slot) && !in.state.GetUnusedSatellite(slot)) break;
    CGPSSatelliteData& satellite = data.m_Satellites[slot];
    satellite.m_nPRN = group.nPRN;
    satellite.m_dElevation = group.dElevation;
    satellite.m_dAzimuth = group.dAzimuth;
    satellite.m_nSNR = group.nSNR;
    satellite.m_bUsed = known && satellite.m_bUsed;
    satellite.m_bInView = data.m_bSatellitesChanged = true;
  }
  in.state.ComputeAverageSNR();
  if (last) data.m_bSatellitesComplete = true;
  return last;
}

// $GPVTG,054.7,T,034.4,M,005.5,N,010.2,K*48
bool CDecoders::VTG(const CDecoding& in) {
  constexpr int kPassedOver = 4;  // magnetic course and knots, with their letters
  CGPSData& data = in.state.record;
  CParser parser(CParser::InPlace(in.message), ",*", false);
  double course = 0.0;
  double speed = 0.0;
  std::u16string_view letter;
  parser.SkipField();
  if (!parser.GetDouble(course) || !parser.GetField(letter)) return InvalidSentence("VTG");
  if (letter != u"T" && letter != u"t") return false;
  data.m_dHeading = HeadingOfCourse(course);
  for (int field = 0; field < kPassedOver; ++field) parser.SkipField();
  if (!parser.GetDouble(speed) || !parser.GetField(letter)) return InvalidSentence("VTG");
  if (letter != u"K" && letter != u"k") return false;
  data.m_dSpeed = speed / kKmhPerMetreASecond;
  // A receiver that reports its motion is believed: the estimator stays out from now on.
  in.state.computeMotion = false;
  data.m_bVelocityValid = true;
  return true;
}
