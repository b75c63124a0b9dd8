#pragma once

#include <array>

#include "gpsengine/records/gpsdata.h"

#pragma GCC visibility push(default)

/// Distance of two points of the local grid, in metres.
double Distance(double dEast1, double dNorth1, double dEast2, double dNorth2);
/// Direction of a displacement in radians, a mathematical angle from -π to π: 0 is east, π/2 north. Due west
/// gives -π.
double Direction(double dNorth, double dEast);

/// Derives speed and direction from successive positions, for a receiver that reports no motion: from the
/// shift of the mean of the last three fixes on a flat local grid. The first fix after a Reset sets the
/// grid's reference point. Runs on the reader thread; a host may call Reset while the engine is stopped.
class CSpeedEngine {
 public:
  /// Without reference point or fixes.
  CSpeedEngine() { Reset(); }

  /// Takes a fix in, writes its place on the local grid and, if time has passed since the last one, its speed
  /// and heading. False if the fix has no signal (it is then passed over) or if no time has passed.
  bool ComputeMotion(CGPSData& fix);
  /// Forgets the reference point and all fixes.
  void Reset();
  /// Forgets the fixes and keeps the reference point.
  void RemoveAllFixes() { m_nFixes = 0; }
  /// Puts a fix into the window, in place of the oldest one if that is full.
  void AddFix(const CGPSData& fix);

 private:
  static constexpr int kWindow = 3;

  // What the window needs of a fix.
  struct Fix {
    double dNorth, dEast, dTime;
  };

  std::array<Fix, kWindow> m_Fixes;  // the oldest first
  int m_nFixes = 0;
  double m_dEastScale;  // metres per radian; 0: no reference is set
  double m_dRefLatitude, m_dRefLongitude;
  double m_dNewTime, m_dNewNorth, m_dNewEast;  // the newest fix, and the mean with it
  double m_dOldTime, m_dOldNorth, m_dOldEast;  // the one before, and the mean without it
};

#pragma GCC visibility pop
