#include "gpsengine/records/gpsdata.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<CGPSSatelliteData>);
static_assert(sizeof(CTime) == 4);

// offsetof on a class with a virtual destructor is conditionally supported; both our compilers do support it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

static_assert(sizeof(CGPSSatelliteData) == 32);
static_assert(offsetof(CGPSSatelliteData, m_nPRN) == 16);
static_assert(offsetof(CGPSSatelliteData, m_bUsed) == 20);
static_assert(offsetof(CGPSSatelliteData, m_bInView) == 21);
static_assert(offsetof(CGPSSatelliteData, m_nSNR) == 24);

static_assert(offsetof(CGPSStatusData, m_bStatusUpdated) == 8);
static_assert(offsetof(CGPSStatusData, m_nBeaconSignalStrength) == 12);
static_assert(offsetof(CGPSStatusData, m_dBeaconFrequency) == 24);
static_assert(offsetof(CGPSStatusData, m_nBeaconBitRate) == 32);
static_assert(offsetof(CGPSStatusData, m_bBeaconTuneValid) == 36);
static_assert(offsetof(CGPSStatusData, m_bMaskSaveValid) == 38);
static_assert(offsetof(CGPSStatusData, m_nElevationMask) == 40);
static_assert(offsetof(CGPSStatusData, m_bMaskSaved) == 44);
static_assert(offsetof(CGPSStatusData, m_nNmeaGGA) == 48);
static_assert(offsetof(CGPSStatusData, m_nNmeaGSV) == 72);
static_assert(offsetof(CGPSStatusData, m_bPositionModeValid) == 76);
static_assert(offsetof(CGPSStatusData, m_dFixedAltitude) == 80);
static_assert(offsetof(CGPSStatusData, m_nVDOPMask) == 100);
static_assert(offsetof(CGPSStatusData, m_dOutputInterval) == 104);
static_assert(offsetof(CGPSStatusData, m_bAck) == 112);
static_assert(offsetof(CGPSStatusData, m_nDgpsMode) == 116);
static_assert(offsetof(CGPSStatusData, m_nLbandMode) == 120);
static_assert(offsetof(CGPSStatusData, m_bTextValid) == 124);
static_assert(offsetof(CGPSStatusData, m_szText) == 125);
static_assert(sizeof(CGPSStatusData) == 208);

static_assert(offsetof(CGPSData, m_dAverageSNR) == 48);
static_assert(offsetof(CGPSData, m_Time) == 56);
static_assert(offsetof(CGPSData, m_Satellites) == 64);
static_assert(offsetof(CGPSData, m_nSatellitesUsed) == 448);
static_assert(offsetof(CGPSData, m_nSignalType) == 456);
static_assert(offsetof(CGPSData, m_dHeading) == 464);
static_assert(offsetof(CGPSData, m_bPositionValid) == 480);
static_assert(offsetof(CGPSData, m_bProprietaryValid) == 485);
static_assert(offsetof(CGPSData, m_dTimeOfDay) == 488);
static_assert(offsetof(CGPSData, m_dLocalEast) == 504);
static_assert(offsetof(CGPSData, m_szProprietary) == 512);
static_assert(offsetof(CGPSData, m_Status) == 592);
static_assert(sizeof(CGPSData) == 800);

#pragma GCC diagnostic pop

CGPSStatusData::CGPSStatusData() {
  Invalidate();
  std::memset(m_szText, 0, sizeof m_szText);
}

void CGPSStatusData::Invalidate() {
  m_bBeaconStatusValid = m_bBeaconTuneValid = m_bElevationMaskValid = m_bNmeaStatusValid = false;
  m_bStatusUpdated = m_bAck = m_bDgpsModeValid = m_bTextValid = false;
  m_bMaskSaveValid = true;
  m_dOutputInterval = -1.0;
  m_nLbandMode = 0;
  m_nNmeaGGA = m_nNmeaGSA = m_nNmeaZDA = m_nNmeaGLL = m_nNmeaVTG = m_nNmeaSAT = m_nNmeaGSV =
      NMEA_MSG_NO_REPORT;
}

void CGPSStatusData::SetText(const char* text, int length) {
  const auto kept = static_cast<std::size_t>(std::clamp(length, 0, static_cast<int>(sizeof m_szText) - 1));
  std::memcpy(m_szText, text, kept);
  m_szText[kept] = 0;
  m_bTextValid = m_bStatusUpdated = true;
}

CGPSData::CGPSData() {
  Clear();
}

void CGPSData::Clear() {
  m_dLatitude = m_dLongitude = m_dAltitude = 0.0;
  m_dPDOP = m_dHDOP = m_dVDOP = m_dAverageSNR = 0.0;
  m_Time = CTime::GetCurrentTime();
  m_nSatellitesUsed = m_nSatellitesInView = m_nSignalType = 0;
  m_dHeading = m_dSpeed = m_dTimeOfDay = m_dLocalNorth = m_dLocalEast = 0.0;
  Invalidate(true);
}

void CGPSData::Invalidate(bool all) {
  m_bPositionValid = m_bVelocityValid = m_bDOPValid = m_bSatellitesChanged = false;
  if (all) m_bSatellitesComplete = false;
}
