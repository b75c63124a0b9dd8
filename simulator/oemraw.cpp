#include "simulator/oemraw.h"

#include <algorithm>
#include <cmath>

#include "simulator/bytes.h"
#include "simulator/navdata.h"
#include "simulator/oemlog.h"

namespace simulator {
namespace {

constexpr std::uint16_t kRange = 43, kCompressedRange = 140, kRawEphemeris = 41, kEphemeris = 7,
                        kAlmanac = 73;
constexpr std::uint32_t kLock = 600;             // seconds
constexpr std::uint32_t kTracking = 0x08109C04;  // L1 C/A, code and phase locked, parity known

}  // namespace

std::string RangeLog(const GpsTime& time, const std::vector<Observation>& observations) {
  std::string body;
  AppendLittle(body, static_cast<std::uint32_t>(observations.size()));
  for (const Observation& o : observations) {
    AppendLittle(body, static_cast<std::uint16_t>(o.view.prn));
    AppendLittle(body, std::uint16_t{0});
    AppendLittle(body, o.pseudorange);
    AppendLittle(body, 0.05F);
    AppendLittle(body, -o.phase);
    AppendLittle(body, 0.01F);
    AppendLittle(body, static_cast<float>(o.doppler));
    AppendLittle(body, static_cast<float>(o.view.snr));
    AppendLittle(body, static_cast<float>(kLock));
    AppendLittle(body, kTracking);
  }
  return OemBinary(kRange, time, body);
}

// Doppler in 28 bits, range in 36, phase, deviations, satellite, time of lock in 21 and signal in 5.
std::string CompressedRangeLog(const GpsTime& time, const std::vector<Observation>& observations) {
  std::string body;
  AppendLittle(body, static_cast<std::uint32_t>(observations.size()));
  for (const Observation& o : observations) {
    AppendLittle(body, kTracking);
    const auto doppler = static_cast<std::uint64_t>(std::llround(o.doppler * 256));
    const auto range = static_cast<std::uint64_t>(std::llround(o.pseudorange * 128));
    AppendLittle(body, (doppler & 0xFFFFFFF) | range << 28);
    AppendLittle(body, static_cast<std::uint32_t>(std::llround(-o.phase * 256)));
    AppendLittle(body, std::uint8_t{0x11});
    AppendLittle(body, static_cast<std::uint8_t>(o.view.prn));
    AppendLittle(body, kLock * 32 | static_cast<std::uint32_t>(std::clamp(o.view.snr - 20, 0, 31)) << 21);
    AppendLittle(body, std::uint16_t{0});
  }
  return OemBinary(kCompressedRange, time, body);
}

// Satellite, time, health, issues, weeks of the reference time and of the sending; the orbit in radians and
// metres, the clock, and what is told beside.
std::string EphemerisLog(const GpsTime& time, const Ephemeris& e) {
  const GpsTime reference = time + std::remainder(e.toe - time.seconds, 604800.0);
  std::string body;
  const auto whole = [&](int value) { AppendLittle(body, static_cast<std::uint32_t>(value)); };
  const auto real = [&](double value) { AppendLittle(body, value); };
  whole(e.prn);
  real(std::floor(time.seconds / 6) * 6);
  for (const int value : {0, e.issue, e.issue, reference.week, time.week}) whole(value);
  for (const double value :
       {double(e.toe), e.sqrt_a * e.sqrt_a, kGpsPi * e.delta_n, kGpsPi * e.m0, e.eccentricity,
        kGpsPi * e.omega, double(e.cuc), double(e.cus), double(e.crc), double(e.crs), double(e.cic),
        double(e.cis), kGpsPi * e.i0, kGpsPi * e.i_dot, kGpsPi * e.omega0, kGpsPi * e.omega_dot}) {
    real(value);
  }
  whole(e.ClockIssue());
  for (const double value : {double(e.toc), double(e.tgd), double(e.af0), double(e.af1), double(e.af2)})
    real(value);
  whole(0);                                                                     // spoofing
  real(std::sqrt(kEarthGravity) / std::pow(e.sqrt_a, 3) + kGpsPi * e.delta_n);  // mean motion
  real(4.0);                                                                    // variance of the range
  return OemBinary(kEphemeris, time, body);
}

std::string RawEphemerisLog(const GpsTime& time, const Ephemeris& ephemeris) {
  std::string body;
  AppendLittle(body, static_cast<std::uint32_t>(ephemeris.prn));
  const GpsTime reference = time + std::remainder(ephemeris.toe - time.seconds, 604800.0);
  AppendLittle(body, static_cast<std::uint32_t>(reference.week));
  AppendLittle(body, static_cast<std::uint32_t>(ephemeris.toe));
  for (int id = 1; id <= 3; ++id) {
    for (const std::uint32_t word : Subframe(id, ephemeris, time)) {
      for (const int shift : {16, 8, 0}) body += static_cast<char>(word >> shift & 0xFF);
    }
  }
  return OemBinary(kRawEphemeris, time, body);
}

std::string AlmanacLog(const GpsTime& time, const std::vector<Ephemeris>& ephemerides) {
  std::string body;
  AppendLittle(body, static_cast<std::uint32_t>(ephemerides.size()));
  for (const Ephemeris& e : ephemerides) {
    AppendLittle(body, static_cast<std::uint32_t>(e.prn));
    AppendLittle(body, static_cast<std::uint32_t>(time.week));
    const double motion = 2 * kPi / 43082;
    for (const double value :
         {double(e.toe), e.eccentricity, kGpsPi * e.omega_dot, kGpsPi * e.omega0, kGpsPi * e.omega,
          kGpsPi * e.m0, double(e.af0), double(e.af1), motion, e.sqrt_a * e.sqrt_a, kGpsPi * e.i0}) {
      AppendLittle(body, value);
    }
    for (int i = 0; i < 4; ++i)
      AppendLittle(body, std::uint32_t{0});  // configuration, health twice, spoofing
  }
  return OemBinary(kAlmanac, time, body);
}

}  // namespace simulator
