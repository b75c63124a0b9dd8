#include "simulator/oemraw.h"

#include <cmath>

#include "simulator/bytes.h"
#include "simulator/navdata.h"
#include "simulator/oemlog.h"

namespace simulator {
namespace {

constexpr std::uint16_t kRange = 43, kRawEphemeris = 41, kAlmanac = 73;
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
    AppendLittle(body, 600.0F);  // seconds of lock
    AppendLittle(body, kTracking);
  }
  return OemBinary(kRange, time, body);
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
