#include "gpsengine/records/gpsdata.h"
#include "gpsengine/records/gpsdataraw.h"
#include "tests/support/basics.h"

namespace {

TEST(Records, StatusForgetsItsFlagsAndTheValuesWithoutOne) {
  CGPSStatusData status;
  EXPECT_STREQ(status.m_szText, "");
  status.m_bAck = status.m_bPositionModeValid = true;
  status.m_bMaskSaveValid = false;
  status.m_nLbandMode = 2;
  status.m_nNmeaSAT = NMEA_MSG_ON;
  status.m_nElevationMask = 7;
  status.SetText("report", 6);
  status.Invalidate();
  EXPECT_TRUE(status.m_bMaskSaveValid && status.m_bPositionModeValid);
  EXPECT_FALSE(status.m_bAck || status.m_bTextValid || status.m_bStatusUpdated);
  EXPECT_EQ(status.m_nNmeaSAT, NMEA_MSG_NO_REPORT);
  EXPECT_EQ(status.m_nLbandMode, 0);
  EXPECT_EQ(status.m_nElevationMask, 7);
  EXPECT_STREQ(status.m_szText, "report");
}

TEST(Records, ClearAndInvalidateLeaveWhatOutlivesAPosition) {
  CGPSData data;
  data.m_Satellites[3].m_nPRN = 17;
  data.m_dLatitude = data.m_dHeading = data.m_dLocalEast = 1.0;
  data.m_nSignalType = UDF_SIGNAL_RTK_FIXED;
  data.m_bPositionValid = data.m_bVelocityValid = data.m_bDOPValid = data.m_bSatellitesChanged = true;
  data.m_bSatellitesComplete = data.m_bProprietaryValid = data.m_Status.m_bAck = true;
  data.Invalidate(false);
  EXPECT_FALSE(data.m_bPositionValid || data.m_bVelocityValid || data.m_bDOPValid ||
               data.m_bSatellitesChanged);
  EXPECT_TRUE(data.m_bSatellitesComplete);
  EXPECT_EQ(data.m_dLatitude, 1.0);
  data.m_Time = CTime(1);
  data.Clear();
  EXPECT_GT(data.m_Time.GetTime(), 1);
  EXPECT_FALSE(data.m_bSatellitesComplete);
  EXPECT_EQ(data.m_dLatitude + data.m_dHeading + data.m_dLocalEast + data.m_nSignalType, 0.0);
  EXPECT_EQ(data.m_Satellites[3].m_nPRN, 17);
  EXPECT_TRUE(data.m_bProprietaryValid && data.m_Status.m_bAck);
}

DataRecord_G12_MBN Measurement(int prn) {
  DataRecord_G12_MBN record{};
  record.nSatellite = static_cast<std::int8_t>(prn);
  record.nCount = -1499;
  record.dRange = 0.07;
  return record;
}

TEST(Records, RawEpochTakesElevenSatellitesAndUpdatesThemOnlyBelowThat) {
  CGPSDataRaw epoch;
  for (int prn = 1; prn <= 10; ++prn) EXPECT_TRUE(epoch.AddSatelliteData(Measurement(prn)));
  EXPECT_TRUE(epoch.AddSatelliteData(Measurement(3)));
  EXPECT_EQ(epoch.GetNumSV(), 10);
  EXPECT_TRUE(epoch.AddSatelliteData(Measurement(11)));
  for (const int refused : {12, 3}) EXPECT_FALSE(epoch.AddSatelliteData(Measurement(refused)));
  EXPECT_EQ(epoch.GetNumSV(), 11);

  CGPSSatelliteDataRaw satellite;
  for (const int outside : {-1, 11, 12}) EXPECT_FALSE(epoch.GetSatelliteData(satellite, outside));
  EXPECT_EQ(satellite.m_nPRN, 0);
  ASSERT_TRUE(epoch.GetSatelliteData(satellite, 2));
  EXPECT_EQ(satellite.m_nPRN, 3);

  epoch.m_Time = CTime(1'000'000);
  epoch.m_dLatitude = epoch.m_dClockDrift = epoch.m_nGPSWeek = epoch.m_bEpochComplete = true;
  epoch.Clear();
  EXPECT_EQ(epoch.m_dLatitude + epoch.m_dClockDrift + epoch.m_nGPSWeek + epoch.m_bEpochComplete, 0.0);
  EXPECT_EQ(epoch.GetNumSV(), 0);
  EXPECT_EQ(epoch.m_Satellites[2].m_nPRN, 0);
  EXPECT_EQ(epoch.m_Time.GetTime(), 1'000'000);
}

TEST(Records, McaMeasurementKeepsItsSignsAndTheRestOfTheSlot) {
  CGPSDataRaw epoch;
  EXPECT_TRUE(epoch.AddSatelliteData(Measurement(30)));
  EXPECT_TRUE(epoch.AddSatelliteData(DataRecord_G12_MCA{30, 8.5, 20000}));
  EXPECT_TRUE(epoch.AddSatelliteData(DataRecord_G12_MCA{200, 9.5, -1}));
  EXPECT_FALSE(epoch.AddSatelliteData(DataRecord_G12_MCA{0, 9.5, -1}));
  const CGPSSatelliteDataRaw& slot = epoch.m_Satellites[0];
  EXPECT_EQ(slot.m_dCarrierPhase, 8.5);
  EXPECT_DOUBLE_EQ(slot.m_dDoppler, 2.0);
  EXPECT_DOUBLE_EQ(slot.m_dPseudorange, 0.07 * 299792458.0);
  EXPECT_EQ(slot.m_nSignalCount, -2);
  EXPECT_EQ(epoch.m_Satellites[1].m_nPRN, 200);
}

}  // namespace
