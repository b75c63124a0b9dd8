#include "simulator/sky.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "simulator/dice.h"
#include "simulator/navdata.h"

namespace simulator {
namespace {

constexpr int kPlanes = 6, kSlots = 5;
constexpr int kIssueSeconds = 7200;
constexpr std::size_t kChannels = 12;
const double kWeakBelow = Radians(8);  // too noisy for the fix from here down

// An angle in semicircles, brought to -1 up to 1.
double Wrapped(double semicircles) {
  return std::remainder(semicircles, 2.0);
}

// Signal by elevation, with a slow fading of each satellite's own.
int SignalOf(int prn, double elevation, const GpsTime& time) {
  const double fading = 1.5 * std::sin(time.seconds * 2 * kPi / (70 + 3 * prn) + prn);
  return static_cast<int>(std::lround(33 + 17 * std::pow(std::sin(elevation), 0.7) + fading));
}

// Inverts a symmetric, positive definite matrix in place by Gauss and Jordan.
void Invert(std::array<std::array<double, 4>, 4>& m) {
  for (std::size_t k = 0; k < 4; ++k) {
    const double pivot = 1 / m[k][k];
    m[k][k] = 1;
    for (double& value : m[k]) value *= pivot;
    for (std::size_t i = 0; i < 4; ++i) {
      if (i == k) continue;
      const double factor = std::exchange(m[i][k], 0.0);
      for (std::size_t j = 0; j < 4; ++j) m[i][j] -= factor * m[k][j];
    }
  }
}

}  // namespace

Dilution DilutionOf(const std::vector<View>& views) {
  std::array<std::array<double, 4>, 4> m{};
  int used = 0;
  for (const View& view : views) {
    if (!view.used) continue;
    ++used;
    const double c = std::cos(view.elevation);
    const double row[4] = {c * std::sin(view.azimuth), c * std::cos(view.azimuth), std::sin(view.elevation),
                           1};
    for (std::size_t i = 0; i < 4; ++i) {
      for (std::size_t j = 0; j < 4; ++j) m[i][j] += row[i] * row[j];
    }
  }
  if (used < 4) return {};
  Invert(m);
  const auto bounded = [](double variance) { return std::min(99.9, std::sqrt(std::max(variance, 0.0))); };
  return {bounded(m[0][0] + m[1][1] + m[2][2]), bounded(m[0][0] + m[1][1]), bounded(m[2][2])};
}

Sky::Sky(const GpsTime& start, unsigned seed) : start_(start) {
  Dice dice(seed);
  const auto real = [&dice](double low, double high) { return static_cast<float>(dice.Between(low, high)); };
  for (int i = 0; i < kPlanes * kSlots; ++i) {
    const int plane = i / kSlots, slot = i % kSlots;
    Orbit orbit{};
    Ephemeris& c = orbit.constant;
    c.prn = i + 1;
    c.sqrt_a = dice.Between(5153.55, 5153.75);
    c.eccentricity = dice.Between(0.001, 0.018);
    c.omega = dice.Between(-1, 1);
    c.delta_n = real(1.3e-9, 1.6e-9);
    c.omega_dot = real(-2.7e-9, -2.4e-9);
    c.i_dot = real(-1e-10, 1e-10);
    c.tgd = real(-1.5e-8, 1e-8);
    // Whole steps of af0 in two hours, so that an issue takes over from the last one without a leap of 7 cm.
    c.af1 = std::ldexp(std::nearbyint(real(-1.5, 1.5)), -36);
    c.crc = real(180, 320);
    c.crs = real(-90, 90);
    c.cuc = real(-5e-6, 5e-6);
    c.cus = real(3e-6, 1e-5);
    c.cic = real(-2e-7, 2e-7);
    c.cis = real(-2e-7, 2e-7);
    const double along = 0.4 * slot + 0.133 * plane + dice.Between(-0.05, 0.05);  // from the node, of 2
    orbit.mean_anomaly = along - c.omega;
    orbit.node = plane / 3.0 + dice.Between(-0.02, 0.02);
    orbit.inclination = dice.Between(0.302, 0.31);
    orbit.clock = std::ldexp(std::nearbyint(std::ldexp(dice.Between(-4e-4, 4e-4), 31)), -31);
    c = AsBroadcast(c);
    orbits_.push_back(orbit);
  }
}

Ephemeris Sky::EphemerisAt(int prn, const GpsTime& time) const {
  const Orbit& orbit = orbits_.at(static_cast<std::size_t>(prn - 1));
  Ephemeris eph = orbit.constant;

  // As the satellites do it: in force for the two hours that end at its reference time.
  const int issue = static_cast<int>(time.seconds) / kIssueSeconds + 1;
  const double since_start = GpsTime{time.week, static_cast<double>(issue * kIssueSeconds)} - start_;
  eph.toe = eph.toc = issue * kIssueSeconds % 604800;
  eph.issue = (time.week * 84 + issue) % 256;  // 84 issues in a week

  const double turn = kEarthRotation / kGpsPi;  // semicircles a second
  const double motion =
      std::sqrt(kEarthGravity) / (eph.sqrt_a * eph.sqrt_a * eph.sqrt_a) / kGpsPi + eph.delta_n;
  eph.m0 = Wrapped(orbit.mean_anomaly + motion * since_start);
  eph.omega0 = Wrapped(orbit.node + (eph.omega_dot - turn) * since_start + turn * eph.toe);
  eph.i0 = orbit.inclination + eph.i_dot * since_start;
  eph.af0 =
      static_cast<float>(orbit.clock + eph.af1 * (since_start + std::fmod(start_.seconds, kIssueSeconds)));
  return AsBroadcast(eph);
}

std::vector<View> Sky::InView(const Vector& antenna, const GpsTime& time, double mask_degrees) const {
  const Geodetic place = ToGeodetic(antenna);
  std::vector<View> views;
  for (const Orbit& orbit : orbits_) {
    const int prn = orbit.constant.prn;
    const Level d = ToLevel(SatelliteAt(EphemerisAt(prn, time), time).position - antenna, place);
    const double elevation = std::atan2(d.up, std::hypot(d.east, d.north));
    if (elevation < std::max(0.0, Radians(mask_degrees))) continue;
    const double azimuth = std::atan2(d.east, d.north);
    views.push_back({prn, elevation, azimuth < 0 ? azimuth + 2 * kPi : azimuth,
                     SignalOf(prn, elevation, time), elevation >= kWeakBelow});
  }
  std::sort(views.begin(), views.end(),
            [](const View& a, const View& b) { return a.elevation > b.elevation; });
  if (views.size() > kChannels) views.resize(kChannels);
  std::sort(views.begin(), views.end(), [](const View& a, const View& b) { return a.prn < b.prn; });
  return views;
}

}  // namespace simulator
