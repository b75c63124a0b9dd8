#pragma once

#include <cstdint>

#include "gpsengine/platform/ctime.h"

#pragma GCC visibility push(default)

// The records of raw measurements and broadcast ephemerides, for post-processing. Hosts are compiled against
// the order and widths of their fields, which the assertions in gpsdataraw.cpp hold.

/// One satellite's measurement.
class CGPSSatelliteDataRaw {
 public:
  int m_nPRN = 0;                ///< Above 0 in a used slot.
  int m_nSignalCount = 0;        ///< The receiver's own measure of the signal, a five-hundredth of its count.
  double m_dPseudorange = 0.0;   ///< Metres.
  double m_dCarrierPhase = 0.0;  ///< Cycles.
  double m_dDoppler = 0.0;       ///< Hertz.
  /// Holds its place; nothing writes it.
  ///@{
  double m_dSpare1 = 0.0;
  double m_dSpare2 = 0.0;
  ///@}
  bool m_bValid = false;  ///< The slot holds a measurement.

  /// Empties the slot.
  void Clear() { *this = CGPSSatelliteDataRaw(); }
};

/// One MBN message of an Ashtech receiver, decoded.
struct DataRecord_G12_MBN {
  std::uint8_t nDataType;    ///< 1; the decoder lets nothing else through.
  std::uint8_t nToFollow;    ///< Messages to follow in this epoch.
  std::int8_t nSatellite;    ///< PRN; satellites with 0 or less are skipped.
  std::uint8_t nUnused1;     ///< Read and not looked at.
  std::int32_t nCount;       ///< The receiver's measure of the signal.
  std::uint8_t nUnused2;     ///< Read and not looked at.
  std::uint8_t nGoodBad;     ///< 24; the decoder lets nothing else through.
  std::uint8_t nUnused3[2];  ///< Read and not looked at.
  double dRange;             ///< Signed fraction of a second.
  std::int32_t nDoppler;     ///< 0.0001 hertz.
  double dCarrierPhase;      ///< Cycles.
  double dUnused4;           ///< Not read.
  std::uint16_t nChecksum;   ///< Sum of the words before it.
};

/// One MCA message of an Ashtech receiver, as far as it is used. The library has no decoder that fills it.
struct DataRecord_G12_MCA {
  std::uint8_t nSatellite;  ///< PRN; satellites with 0 or less are skipped.
  double dCarrierPhase;     ///< Cycles.
  std::int32_t nDoppler;    ///< 0.0001 hertz.
};

/// One measurement epoch.
class CGPSDataRaw {
 public:
  CTime m_Time;             ///< The moment of publication. Clear leaves it.
  double m_dLatitude;       ///< Degrees, unlike CGPSData.
  double m_dLongitude;      ///< Degrees.
  double m_dHeight;         ///< Metres above the ellipsoid.
  double m_dSpare;          ///< Holds its place; nothing writes it.
  bool m_bPositionValid;    ///< The epoch's position and clock have arrived, which closes the epoch.
  bool m_bSpare;            ///< Holds its place; nothing writes it.
  bool m_bEpochComplete;    ///< The last measurement had none to follow.
  double m_dReceiverTime;   ///< Seconds of the week, by the receiver's clock.
  double m_dCorrectedTime;  ///< Receiver time less the clock offset.
  double m_dClockOffset;    ///< Metres.
  double m_dClockDrift;     ///< Rate of m_dClockOffset, metres a second.
  int m_nGPSWeek;           ///< As the last ephemeris has it; until one comes, by this machine's clock.
  CGPSSatelliteDataRaw m_Satellites[12];  ///< The first m_nSatellites are in use.
  int m_nSatellites;                      ///< At most 11.

  /// An empty epoch.
  CGPSDataRaw() { Clear(); }

  /// Empties all slots and zeroes the rest, but for m_Time.
  void Clear();
  /// Slots in use.
  int GetNumSV() const { return m_nSatellites; }
  /// Copies slot `nIndex`. False, with `out` untouched, if that slot is not in use.
  bool GetSatelliteData(CGPSSatelliteDataRaw& out, int nIndex) const;
  /// Takes a measurement into its satellite's slot. False for a satellite number not above 0, and for any
  /// satellite once 11 slots are in use.
  ///@{
  bool AddSatelliteData(const DataRecord_G12_MBN& record);
  bool AddSatelliteData(const DataRecord_G12_MCA& record);
  ///@}

 private:
  CGPSSatelliteDataRaw* FindSlot(int nPRN);
};

/// One satellite's broadcast ephemeris, in the terms and units of IS-GPS-200; angles in the receiver's unit,
/// semicircles.
class CGPSDataEphemeris {
 public:
  std::int16_t m_nPRN = 0;       ///< Satellite number.
  std::int16_t m_nWeek = 0;      ///< Above 0 in a usable record.
  std::int32_t m_lTow = 0;       ///< Seconds of week.
  double m_dTgd = 0.0;           ///< Group delay.
  std::int32_t m_lAodc = 0;      ///< Age of clock data.
  std::int32_t m_lToc = 0;       ///< Clock reference time.
  double m_dAf2 = 0.0;           ///< Clock drift rate.
  double m_dAf1 = 0.0;           ///< Clock drift.
  double m_dAf0 = 0.0;           ///< Clock bias.
  std::int32_t m_lAode = 0;      ///< Age of ephemeris data.
  double m_dDeltaN = 0.0;        ///< Mean motion difference.
  double m_dM0 = 0.0;            ///< Mean anomaly.
  double m_dEccentricity = 0.0;  ///< Of the orbit, without unit.
  double m_dSqrtA = 0.0;         ///< Square root of the semi-major axis.
  std::int32_t m_lToe = 0;       ///< Ephemeris reference time.
  /// Harmonic corrections, cosine and sine: of the inclination (Cic, Cis) and of the argument of latitude
  /// (Cuc, Cus) in radians, of the orbit's radius (Crc, Crs) in metres.
  ///@{
  double m_dCic = 0.0;
  double m_dCrc = 0.0;
  double m_dCis = 0.0;
  double m_dCrs = 0.0;
  double m_dCuc = 0.0;
  double m_dCus = 0.0;
  ///@}
  double m_dOmega0 = 0.0;    ///< Right ascension.
  double m_dOmega = 0.0;     ///< Argument of perigee.
  double m_dI0 = 0.0;        ///< Inclination.
  double m_dOmegaDot = 0.0;  ///< Rate of right ascension.
  double m_dIDot = 0.0;      ///< Rate of inclination.
};

#pragma GCC visibility pop
