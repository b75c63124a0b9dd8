#include "gpsengine/records/gpsdataraw.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace {

// One fewer than there are slots: hosts are written against that number.
constexpr int kMaxSatellites = 11;
constexpr double kSpeedOfLight = 299792458.0;
constexpr double kSignalCountUnit = 500.0;
constexpr double kDopplerUnit = 0.0001;

}  // namespace

static_assert(sizeof(CGPSSatelliteDataRaw) == 56);
static_assert(offsetof(CGPSSatelliteDataRaw, m_dPseudorange) == 8);
static_assert(offsetof(CGPSSatelliteDataRaw, m_bValid) == 48);
static_assert(offsetof(CGPSDataRaw, m_dLatitude) == 8);
static_assert(offsetof(CGPSDataRaw, m_bPositionValid) == 40);
static_assert(offsetof(CGPSDataRaw, m_bEpochComplete) == 42);
static_assert(offsetof(CGPSDataRaw, m_dReceiverTime) == 48);
static_assert(offsetof(CGPSDataRaw, m_nGPSWeek) == 80);
static_assert(offsetof(CGPSDataRaw, m_Satellites) == 88);
static_assert(offsetof(CGPSDataRaw, m_nSatellites) == 760);
static_assert(sizeof(CGPSDataRaw) == 768);
static_assert(offsetof(CGPSDataEphemeris, m_lTow) == 4);
static_assert(offsetof(CGPSDataEphemeris, m_dTgd) == 8);
static_assert(offsetof(CGPSDataEphemeris, m_lToc) == 20);
static_assert(offsetof(CGPSDataEphemeris, m_lAode) == 48);
static_assert(offsetof(CGPSDataEphemeris, m_lToe) == 88);
static_assert(offsetof(CGPSDataEphemeris, m_dOmega0) == 144);
static_assert(sizeof(CGPSDataEphemeris) == 184);

void CGPSDataRaw::Clear() {
  m_dLatitude = m_dLongitude = m_dHeight = m_dSpare = 0.0;
  m_bPositionValid = m_bSpare = m_bEpochComplete = false;
  m_dReceiverTime = m_dCorrectedTime = m_dClockOffset = m_dClockDrift = 0.0;
  m_nGPSWeek = 0;
  for (CGPSSatelliteDataRaw& slot : m_Satellites) slot.Clear();
  m_nSatellites = 0;
}

bool CGPSDataRaw::GetSatelliteData(CGPSSatelliteDataRaw& out, int index) const {
  if (index < 0 || index >= m_nSatellites) return false;
  out = m_Satellites[index];
  return true;
}

// The slot of this satellite, or the first free one, which is taken into use.
CGPSSatelliteDataRaw* CGPSDataRaw::FindSlot(int prn) {
  if (prn <= 0 || m_nSatellites >= kMaxSatellites) return nullptr;
  const auto used = std::next(std::begin(m_Satellites), m_nSatellites);
  const auto slot = std::find_if(std::begin(m_Satellites), used, [&](const CGPSSatelliteDataRaw& satellite) {
    return satellite.m_nPRN == prn;
  });
  if (slot == used) ++m_nSatellites;
  slot->m_nPRN = prn;
  slot->m_bValid = true;
  return &*slot;
}

bool CGPSDataRaw::AddSatelliteData(const DataRecord_G12_MBN& record) {
  CGPSSatelliteDataRaw* slot = FindSlot(record.nSatellite);
  if (slot == nullptr) return false;
  slot->m_nSignalCount = static_cast<int>(record.nCount / kSignalCountUnit);
  slot->m_dPseudorange = kSpeedOfLight * record.dRange;
  slot->m_dCarrierPhase = -record.dCarrierPhase;
  slot->m_dDoppler = record.nDoppler * -kDopplerUnit;
  return true;
}

// Phase and Doppler of this kind have the opposite sign of an MBN's, and the kind carries no range.
bool CGPSDataRaw::AddSatelliteData(const DataRecord_G12_MCA& record) {
  CGPSSatelliteDataRaw* slot = FindSlot(record.nSatellite);
  if (slot == nullptr) return false;
  slot->m_dCarrierPhase = record.dCarrierPhase;
  slot->m_dDoppler = record.nDoppler * kDopplerUnit;
  return true;
}
