#pragma once

#include <vector>

#include "simulator/orbit.h"

namespace simulator {

/// A satellite as the antenna sees it.
struct View {
  int prn = 0;
  double elevation = 0, azimuth = 0;  ///< radians, the azimuth from north over east in 0 up to 2 pi
  int snr = 0;                        ///< dB-Hz
  bool used = false;                  ///< strong enough to take part in the fix
};

struct Dilution {
  double pdop = 99.9, hdop = 99.9, vdop = 99.9;
};

/// Dilution of precision of the used satellites; 99.9 throughout with under four of them.
Dilution DilutionOf(const std::vector<View>& views);

/// Thirty GPS satellites in six planes. Their sky repeats for a seed whatever the date: the orbits are laid
/// out from the start of the run on.
class Sky {
 public:
  Sky(const GpsTime& start, unsigned seed);

  /// The broadcast ephemeris in force at that time; a satellite gets a new one every two hours.
  Ephemeris EphemerisAt(int prn, const GpsTime& time) const;

  /// The satellites at or above the elevation mask, by number; at most twelve, the highest ones, as the
  /// receivers have twelve channels.
  std::vector<View> InView(const Vector& antenna, const GpsTime& time, double mask_degrees) const;

 private:
  // What a satellite keeps, as of the start of the run.
  struct Orbit {
    Ephemeris constant;
    double mean_anomaly, node, inclination, clock;  // semicircles; the node as earth-fixed longitude; seconds
  };

  GpsTime start_;
  std::vector<Orbit> orbits_;
};

}  // namespace simulator
