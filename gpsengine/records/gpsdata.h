#pragma once

#include "gpsengine/platform/ctime.h"

#pragma GCC visibility push(default)

// The records of one position epoch. Hosts read their fields directly and are compiled against their order
// and widths, which the assertions in gpsdata.cpp hold.
//
// A flag of a record means that the thing arrived since the last publication; a value stays until the next
// one replaces it.

/// Whether the receiver outputs a sentence.
enum NmeaMsgStatus : int {
  NMEA_MSG_ON = 0,
  NMEA_MSG_OFF = 1,
  NMEA_MSG_NO_REPORT = 2,  ///< The receiver has not said so, or its report does not know this sentence.
};

/// Source of differential corrections.
enum DgpsMode : int {
  DGPS_MODE_NONE = 0,
  DGPS_MODE_BEACON = 1,    ///< On GSR2650 receivers every source on automatic.
  DGPS_MODE_LBAND = 2,     ///< On GSR2650 receivers Omnistar as the RTK source.
  DGPS_MODE_WAAS = 3,      ///< WAAS or another SBAS.
  DGPS_MODE_CDGPS = 4,     ///< Canada-wide DGPS, over L-band.
  DGPS_MODE_OMNISTAR = 5,  ///< Omnistar as the pseudorange differential source.
};

/// Kind of fix.
enum SignalType : int {
  UDF_SIGNAL_NONE = 0,
  UDF_SIGNAL_GPS = 1,
  UDF_SIGNAL_CORRECTED_GPS = 2,
  UDF_SIGNAL_CALCULATED = 3,  ///< Dead reckoning, or an INGGA.
  UDF_SIGNAL_MANUAL = 4,
  UDF_SIGNAL_RTK_CODE = 5,
  UDF_SIGNAL_RTK_FIXED = 6,
  UDF_SIGNAL_RTK_FLOAT = 7,
  UDF_SIGNAL_POSTPROCESSED = 8,
  UDF_SIGNAL_WAAS = 9,
  UDF_SIGNAL_UNKNOWN = 10,
};

/// Slots of a satellite table: the satellite fields of a GSA sentence.
constexpr int kSatelliteSlots = 12;

/// One satellite.
class CGPSSatelliteData {
 public:
  double m_dElevation = 0.0;  ///< Radians, from whole degrees.
  double m_dAzimuth = 0.0;    ///< Radians, from whole degrees.
  int m_nPRN = 0;             ///< 0: the slot is empty.
  bool m_bUsed = false;       ///< Used in the solution, by the last GSA or SAT report.
  bool m_bInView =
      false;       ///< Listed in the GSV cycle under way or last finished, or in a GSA since it began.
  int m_nSNR = 0;  ///< Signal to noise ratio as the receiver gives it.
};

/// The receiver's settings and what its reports said.
class CGPSStatusData {
 public:
  bool m_bStatusUpdated;            ///< Some field of this record was set since the last publication.
  bool m_bBeaconStatusValid;        ///< The next four fields hold a report.
  int m_nBeaconSignalStrength = 0;  ///< In the receiver's own unit.
  int m_nBeaconSNR = 0;             ///< Signal to noise ratio, in the receiver's own unit.
  double m_dBeaconFrequency = 0.0;  ///< Kilohertz.
  int m_nBeaconBitRate = 0;         ///< Bits a second.
  bool m_bBeaconTuneValid;          ///< m_bBeaconAutoTune holds a report.
  bool m_bBeaconAutoTune = false;   ///< The receiver chooses the beacon by itself.
  bool m_bMaskSaveValid;            ///< m_bMaskSaved may be read. The one flag that Invalidate sets.
  bool m_bElevationMaskValid;       ///< m_nElevationMask holds a report.
  int m_nElevationMask = 0;         ///< Whole degrees.
  bool m_bMaskSaved = false;        ///< The receiver keeps the mask over a power cycle.
  bool m_bNmeaStatusValid;          ///< The seven fields that follow hold a report.
  /// Whether the receiver outputs the sentence; SAT is Ashtech's satellite report. NMEA_MSG_NO_REPORT for one
  /// that the make's report leaves out.
  ///@{
  NmeaMsgStatus m_nNmeaGGA;
  NmeaMsgStatus m_nNmeaGSA;
  NmeaMsgStatus m_nNmeaZDA;
  NmeaMsgStatus m_nNmeaGLL;
  NmeaMsgStatus m_nNmeaVTG;
  NmeaMsgStatus m_nNmeaSAT;
  NmeaMsgStatus m_nNmeaGSV;
  ///@}
  bool m_bPositionModeValid =
      false;                      ///< The five fields that follow hold a report. Invalidate leaves it alone.
  double m_dFixedAltitude = 0.0;  ///< Metres.
  int m_nPositionMode = 0;        ///< As the receiver numbers its modes.
  /// Dilution of precision above which the receiver gives no position.
  ///@{
  int m_nPDOPMask = 0;
  int m_nHDOPMask = 0;
  int m_nVDOPMask = 0;
  ///@}
  double m_dOutputInterval;               ///< Seconds; -1.0: none was reported.
  bool m_bAck;                            ///< The receiver acknowledged a command.
  bool m_bDgpsModeValid;                  ///< m_nDgpsMode holds a report.
  DgpsMode m_nDgpsMode = DGPS_MODE_NONE;  ///< The source of corrections that is set, whether or not any come.
  int m_nLbandMode;                       ///< L-band tuning: 0 no report, 1 automatic, 2 fixed frequency.
  bool m_bTextValid;                      ///< m_szText holds a report.
  char m_szText[80];  ///< 8-bit text of a report that is handed on whole, at most 79 characters and the
                      ///< terminator.

  /// Nothing reported.
  CGPSStatusData();
  /// Copies all fields.
  ///@{
  CGPSStatusData(const CGPSStatusData&) = default;
  CGPSStatusData& operator=(const CGPSStatusData&) = default;
  ///@}
  virtual ~CGPSStatusData() = default;  ///< Virtual, so that a host may derive from it.

  /// Forgets what has been reported: clears the flags, and those values that have no flag of their own.
  void Invalidate();
  /// Stores a text for the host, cut to what m_szText holds, and sets its flags.
  void SetText(const char* pszText, int nLength);
};

/// One position epoch.
class CGPSData {
 public:
  double m_dLatitude;    ///< Radians, south negative.
  double m_dLongitude;   ///< Radians, west negative.
  double m_dAltitude;    ///< Metres, antenna height and geoid separation taken into account as set up.
  double m_dHDOP;        ///< Horizontal dilution of precision.
  double m_dPDOP;        ///< Dilution of precision in three dimensions.
  double m_dVDOP;        ///< Vertical dilution of precision.
  double m_dAverageSNR;  ///< Mean m_nSNR of the used satellites; 0 with none.
  CTime m_Time;          ///< The moment of publication.
  CGPSSatelliteData m_Satellites[kSatelliteSlots];  ///< By slot, in no order; a slot with m_nPRN 0 is empty.
  int m_nSatellitesUsed;                            ///< In the solution.
  int m_nSatellitesInView;                          ///< In a published copy at least m_nSatellitesUsed.
  int m_nSignalType;                                ///< A SignalType.
  double m_dHeading;                                ///< Radians, a mathematical angle: 0 is east, π/2 north.
  double m_dSpeed;                                  ///< Metres per second over ground.
  bool m_bPositionValid;                            ///< Position, height and time of day arrived.
  bool m_bVelocityValid;                            ///< Heading and speed arrived.
  bool m_bDOPValid;                                 ///< m_dHDOP arrived, after a GSA the other two as well.
  bool m_bSatellitesComplete;        ///< A whole group of satellites in view has been taken in.
  bool m_bSatellitesChanged;         ///< A slot of m_Satellites was written.
  bool m_bProprietaryValid = false;  ///< m_szProprietary holds a sentence that no decoder claimed.
  double m_dTimeOfDay;               ///< Seconds since midnight UTC, from the position sentence.
  double m_dLocalNorth;              ///< Metres north of the speed estimator's reference point.
  double m_dLocalEast;               ///< Metres east of it.
  char m_szProprietary[79] = {};  ///< Zero-filled after a shorter sentence; no terminator when all are used.
  CGPSStatusData m_Status;        ///< What the reports that arrived with this record said of the receiver.

  /// A cleared record, with empty slots and no report.
  CGPSData();

  /// Zeroes the position, motion, dilution and counts, sets m_Time to now and clears the flags. Leaves the
  /// satellites, the proprietary sentence and m_Status alone.
  void Clear();
  /// Clears the flags of position, velocity, dilution and changed satellites; m_bSatellitesComplete only with
  /// `bAll`.
  void Invalidate(bool bAll);
};

#pragma GCC visibility pop
