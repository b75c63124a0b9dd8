#include "simulator/ashtechraw.h"

#include <cmath>
#include <cstdint>
#include <string_view>

#include "simulator/bytes.h"

namespace simulator {
namespace {

std::string Frame(const char* kind, std::string payload) {
  std::uint16_t sum = 0;
  for (std::size_t i = 0; i + 1 < payload.size(); i += 2) {
    const unsigned high = static_cast<unsigned char>(payload[i]),
                   low = static_cast<unsigned char>(payload[i + 1]);
    sum = static_cast<std::uint16_t>(sum + (high << 8 | low));
  }
  AppendBig(payload, sum);
  return "$PASHR," + std::string(kind) + ',' + payload + "\r\n";
}

}  // namespace

std::string Mbn(const Observation& o, int to_follow) {
  constexpr std::uint8_t kMeasurement = 1, kGood = 24;
  std::string p;
  AppendBig(p, kMeasurement);
  AppendBig(p, static_cast<std::uint8_t>(to_follow));
  AppendBig(p, static_cast<std::uint8_t>(o.view.prn));
  AppendBig(p, static_cast<std::uint8_t>(std::lround(Degrees(o.view.elevation))));
  AppendBig(p, static_cast<std::int32_t>(o.view.snr * 500));
  AppendBig(p, static_cast<std::uint8_t>(std::lround(Degrees(o.view.azimuth) / 2)));
  AppendBig(p, kGood);
  AppendBig(p, std::uint16_t{0});
  AppendBig(p, 1.0 - o.pseudorange / kSpeedOfLight);
  AppendBig(p, static_cast<std::int32_t>(std::lround(-o.doppler * 10000)));
  AppendBig(p, -o.phase);
  AppendBig(p, std::uint64_t{0});
  return Frame("MBN", p);
}

std::string Pbn(const GpsTime& receiver_time, const Truth& truth, const Dilution& dilution) {
  std::string p;
  AppendBig(p, static_cast<std::int32_t>(std::lround(receiver_time.seconds * 1000)));
  p += "SIMU";
  for (const double x : {truth.position.x, truth.position.y, truth.position.z}) AppendBig(p, x);
  AppendBig(p, static_cast<float>(truth.clock_offset * kSpeedOfLight));
  for (const double v : {truth.velocity.x, truth.velocity.y, truth.velocity.z})
    AppendBig(p, static_cast<float>(v));
  AppendBig(p, static_cast<float>(truth.clock_drift * kSpeedOfLight));
  AppendBig(p, static_cast<std::uint16_t>(std::lround(dilution.pdop * 100)));
  return Frame("PBN", p);
}

std::string Snv(const Ephemeris& e, const GpsTime& time) {
  const auto whole = [](int value) { return static_cast<std::int32_t>(value); };
  std::string p;
  AppendBig(p, static_cast<std::int16_t>(time.week % 1024));
  AppendBig(p, static_cast<std::int32_t>(time.seconds));
  AppendBig(p, e.tgd);
  AppendBig(p, whole(e.ClockIssue()));
  AppendBig(p, whole(e.toc));
  for (const float value : {e.af2, e.af1, e.af0}) AppendBig(p, value);
  AppendBig(p, whole(e.issue));
  AppendBig(p, e.delta_n);
  for (const double value : {e.m0, e.eccentricity, e.sqrt_a}) AppendBig(p, value);
  AppendBig(p, whole(e.toe));
  for (const float value : {e.cic, e.crc, e.cis, e.crs, e.cuc, e.cus}) AppendBig(p, value);
  for (const double value : {e.omega0, e.omega, e.i0}) AppendBig(p, value);
  AppendBig(p, e.omega_dot);
  AppendBig(p, e.i_dot);
  p.append(6, '\0');  // accuracy, health and fit interval, all at their best
  p += static_cast<char>(e.prn - 1);
  p += '\0';
  return Frame("SNV", p);
}

}  // namespace simulator
