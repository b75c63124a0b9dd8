#include "simulator/world.h"

#include <algorithm>
#include <cmath>

namespace simulator {
namespace {

constexpr double kL1 = 1575.42e6;
constexpr double kWavelength = kSpeedOfLight / kL1;

// A crystal that wanders with the temperature and never needs to be set.
constexpr double kClockBias = 120e-6, kClockSwing = 60e-6, kClockRate = 2 * kPi / 5400;

}  // namespace

World::World(const Options& o)
    : start_(FromUtc(o.start_utc)),
      path_({Radians(o.latitude), Radians(o.longitude), o.height}, o.moving, o.seed),
      sky_(start_, o.seed),
      clock_phase_(0.7 * o.seed) {}

double World::ClockOffset(double t) const {
  return kClockBias + kClockSwing * std::sin(clock_phase_ + kClockRate * t);
}
double World::ClockDrift(double t) const {
  return kClockSwing * kClockRate * std::cos(clock_phase_ + kClockRate * t);
}

Truth World::TruthAt(double t) const {
  const Vector position = path_.Position(t);
  return {TimeAt(t), position, path_.Velocity(t), ToGeodetic(position), ClockOffset(t), ClockDrift(t)};
}

std::vector<View> World::InView(double t, double mask_degrees) const {
  return sky_.InView(path_.Position(t), TimeAt(t), mask_degrees);
}

double World::TrueSeconds(double receiver_seconds) const {
  double t = receiver_seconds;
  for (int i = 0; i < 3; ++i) t = receiver_seconds - ClockOffset(t);
  return t;
}

double World::Pseudorange(int prn, double receiver_seconds) const {
  const double received = TrueSeconds(receiver_seconds);
  const GpsTime time = TimeAt(received);
  const Ephemeris ephemeris = sky_.EphemerisAt(prn, time);
  const Vector antenna = path_.Position(received);
  double flight = 0.075;
  Satellite satellite{};
  for (int i = 0; i < 5; ++i) {  // each round gains some five digits
    satellite = SatelliteAt(ephemeris, time + -flight);
    flight = Length(TurnedWithEarth(satellite.position, flight) - antenna) / kSpeedOfLight;
  }
  return kSpeedOfLight * (flight + (receiver_seconds - received) - satellite.clock);
}

std::vector<Observation> World::Observe(double receiver_seconds, double mask_degrees,
                                        std::size_t most) const {
  std::vector<View> views = InView(TrueSeconds(receiver_seconds), mask_degrees);
  while (views.size() > most) {
    views.erase(std::min_element(views.begin(), views.end(),
                                 [](const View& a, const View& b) { return a.elevation < b.elevation; }));
  }
  constexpr double kStep = 0.05;
  std::vector<Observation> observations;
  for (const View& view : views) {
    const double range = Pseudorange(view.prn, receiver_seconds);
    const double rate =
        (Pseudorange(view.prn, receiver_seconds + kStep) - Pseudorange(view.prn, receiver_seconds - kStep)) /
        (2 * kStep);
    observations.push_back({view, range, range / kWavelength + 1000.0 * view.prn, -rate / kWavelength});
  }
  return observations;
}

}  // namespace simulator
