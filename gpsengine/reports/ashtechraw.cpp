#include <chrono>
#include <cmath>
#include <ctime>
#include <new>
#include <numbers>

#include "gpsengine/platform/trace.h"
#include "gpsengine/receiver/gpsreceiver.h"
#include "gpsengine/receiver/post.h"
#include "gpsengine/receiver/workingstate.h"
#include "gpsengine/reports/wire.h"

// The raw data of an Ashtech receiver: MBN has one satellite's measurement, PBN the position and clock that
// close an epoch, SNV one satellite's ephemeris. A payload ends with the sum of its other bytes.

namespace {

constexpr double kSpeedOfLight = 299792458.0;
constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;
constexpr int kLeastSatellites = 4;  // with fewer there is no position to compute

// The receiver gives a range as one second less the time of flight, and may be whole seconds off.
double SignedFraction(double range) {
  double fraction = 1.0 - range;
  if (fraction < -1.0) fraction += std::trunc(std::fabs(fraction)) + 1.0;
  if (fraction > 1.0) fraction -= std::trunc(std::fabs(fraction));
  return fraction;
}

struct Geodetic {
  double dLatitude, dLongitude;  // radians
  double dHeight;                // metres
};

// Bowring's closed form, good to less than a millimetre at any height that a receiver works at. On the axis
// it divides by zero, and the result says so as the arithmetic has it.
Geodetic ToGeodetic(double x, double y, double z) {
  constexpr double a = 6378137.0;
  constexpr double f = 0.003352810681238051;
  constexpr double e2 = (2.0 - f) * f;
  constexpr double b = (1.0 - f) * a;
  constexpr double ep2 = e2 / (1.0 - e2);

  const double p = std::sqrt(x * x + y * y);
  const double t = std::atan(z * a / (p * b));
  const double sine = std::sin(t), cosine = std::cos(t);
  const double latitude =
      std::atan((z + ep2 * b * sine * sine * sine) / (p - e2 * a * cosine * cosine * cosine));
  const double longitude = 2.0 * std::atan(y / (x + p));
  const double n = a / std::sqrt(1.0 - e2 * std::sin(latitude) * std::sin(latitude));
  return {latitude, longitude, p / std::cos(latitude) - n};
}

// The GPS week by the computer's clock and its local date, until an ephemeris has told the week.
int WeekByClock() {
  using namespace std::chrono;
  std::tm local{};
  CTime::GetCurrentTime().GetLocalTm(&local);
  const sys_days today = year(local.tm_year + 1900) / (local.tm_mon + 1) / local.tm_mday;
  constexpr sys_days kFirstDay = January / 6 / 1980;
  return static_cast<int>(duration_cast<weeks>(today - kFirstDay).count());
}

}  // namespace

// $PASHR,MBN, and 42 bytes.
bool CGPSReceiver::ProcessPASHR_MBN(const void* payload) {
  if (payload == nullptr) return false;
  const RecordLock state;
  const std::uint16_t checksum = WireChecksum(payload, 40);
  WireReader in(payload);
  DataRecord_G12_MBN record{};
  record.nDataType = in.Take<std::uint8_t>();
  record.nToFollow = in.Take<std::uint8_t>();
  record.nSatellite = in.Take<std::int8_t>();
  record.nUnused1 = in.Take<std::uint8_t>();
  record.nCount = in.Take<std::int32_t>();
  record.nUnused2 = in.Take<std::uint8_t>();
  record.nGoodBad = in.Take<std::uint8_t>();
  record.nUnused3[0] = in.Take<std::uint8_t>();
  record.nUnused3[1] = in.Take<std::uint8_t>();
  record.dRange = SignedFraction(in.Take<double>());
  record.nDoppler = in.Take<std::int32_t>();
  record.dCarrierPhase = in.Take<double>();
  in.Skip(8);
  record.nChecksum = in.Take<std::uint16_t>();

  if (checksum != record.nChecksum) {
    Trace("Bad MBN checksum %d - %d\n", checksum, record.nChecksum);
    return false;
  }
  if (record.nDataType != 1 || record.nGoodBad != 24) {
    Trace("bad markers: datatype - %d, goodbad - %d", record.nDataType, record.nGoodBad);
    return false;
  }
  state->epoch.m_bEpochComplete = record.nToFollow == 0;
  Trace("num to follow: %d\n", record.nToFollow);
  return state->epoch.AddSatelliteData(record);
}

// $PASHR,PBN, and 56 bytes. A bad one takes the epoch's measurements with it: no position will come for them.
bool CGPSReceiver::ProcessPASHR_PBN(const void* payload) {
  if (payload == nullptr) return false;
  const RecordLock state;
  const std::uint16_t computed = WireChecksum(payload, 54);
  WireReader in(payload);
  const double receiver_time = in.Take<std::int32_t>() * 0.001;
  in.Skip(4);
  const double x = in.Take<double>();
  const double y = in.Take<double>();
  const double z = in.Take<double>();
  const double clock_offset = in.Take<float>();
  in.Skip(12);
  const double clock_drift = in.Take<float>();
  in.Skip(2);
  const auto received = in.Take<std::uint16_t>();

  if (computed != received) {
    Trace("Bad PBN checksum: %d : %d\n", computed, received);
    state->epoch.Clear();
    return false;
  }
  const Geodetic position = ToGeodetic(x, y, z);
  state->epoch.m_dLatitude = position.dLatitude * kDegreesPerRadian;
  state->epoch.m_dLongitude = position.dLongitude * kDegreesPerRadian;
  state->epoch.m_dHeight = position.dHeight;
  state->epoch.m_dReceiverTime = receiver_time;
  state->epoch.m_dCorrectedTime = receiver_time - clock_offset / kSpeedOfLight;
  state->epoch.m_dClockOffset = clock_offset;
  state->epoch.m_dClockDrift = clock_drift;
  state->epoch.m_bPositionValid = true;
  return true;
}

// $PASHR,SNV, and 132 bytes. The record takes a bad one too, but it goes no further.
bool CGPSReceiver::ProcessPASHR_SNV(const void* payload) {
  if (payload == nullptr) return false;
  WireReader in(payload);
  RecordLock state;
  CGPSDataEphemeris& ephemeris = state->ephemeris;
  ephemeris.m_nWeek = in.Take<std::int16_t>();
  ephemeris.m_lTow = in.Take<std::int32_t>();
  ephemeris.m_dTgd = in.Take<float>();
  ephemeris.m_lAodc = in.Take<std::int32_t>();
  ephemeris.m_lToc = in.Take<std::int32_t>();
  ephemeris.m_dAf2 = in.Take<float>();
  ephemeris.m_dAf1 = in.Take<float>();
  ephemeris.m_dAf0 = in.Take<float>();
  ephemeris.m_lAode = in.Take<std::int32_t>();
  ephemeris.m_dDeltaN = in.Take<float>();
  ephemeris.m_dM0 = in.Take<double>();
  ephemeris.m_dEccentricity = in.Take<double>();
  ephemeris.m_dSqrtA = in.Take<double>();
  ephemeris.m_lToe = in.Take<std::int32_t>();
  ephemeris.m_dCic = in.Take<float>();
  ephemeris.m_dCrc = in.Take<float>();
  ephemeris.m_dCis = in.Take<float>();
  ephemeris.m_dCrs = in.Take<float>();
  ephemeris.m_dCuc = in.Take<float>();
  ephemeris.m_dCus = in.Take<float>();
  ephemeris.m_dOmega0 = in.Take<double>();
  ephemeris.m_dOmega = in.Take<double>();
  ephemeris.m_dI0 = in.Take<double>();
  ephemeris.m_dOmegaDot = in.Take<float>();
  ephemeris.m_dIDot = in.Take<float>();
  in.Skip(6);
  ephemeris.m_nPRN = static_cast<std::int16_t>(in.Take<std::int8_t>() + 1);
  in.Skip(1);
  if (in.Take<std::uint16_t>() != WireChecksum(payload, 130)) {
    Trace("Bad ephemeris checksum\n");
    return false;
  }
  Trace("EPMERIS for %d\n", ephemeris.m_nPRN);
  state.Unlock();
  PostEphemerisInfo();
  return true;
}

bool CGPSReceiver::PostEphemerisInfo() {
  RecordLock state;
  if (state->ephemeris.m_nWeek <= 0) return false;
  std::unique_ptr<CGPSDataEphemeris> copy(new (std::nothrow) CGPSDataEphemeris(state->ephemeris));
  state.Unlock();
  BroadcastNotification(GPS_NOTIFY_EPHEMERIS, &m_Notification);
  if (copy == nullptr) return false;
  PostObject(WM_GPS_NEW_EPHEMERIS, std::move(copy));
  return true;
}

// An epoch leaves when its position is there.
bool CGPSReceiver::PostNewDataRaw() {
  RecordLock state;
  if (!state->epoch.m_bPositionValid) return false;
  if (state->epoch.GetNumSV() < kLeastSatellites) {
    state->epoch.Clear();
    return false;
  }
  std::unique_ptr<CGPSDataRaw> copy(new (std::nothrow) CGPSDataRaw);
  if (copy == nullptr) return false;
  state->epoch.m_nGPSWeek = state->ephemeris.m_nWeek > 0 ? state->ephemeris.m_nWeek : WeekByClock();
  *copy = state->epoch;
  copy->m_Time = CTime::GetCurrentTime();
  Trace("writing raw data when MBN is %d\n", state->epoch.m_bEpochComplete);
  state->epoch.Clear();
  state.Unlock();
  PostObject(WM_GPS_NEW_RAW_DATA, std::move(copy));
  return true;
}
