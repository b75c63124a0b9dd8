#pragma once

#include "gpsengine/sentences/moment.h"

#pragma GCC visibility push(default)

namespace gps {

/// Of a week.
constexpr double kSecondsOfWeek = 604800.0;
/// What satellites count to before they begin again.
constexpr int kWeeksOfRound = 1024;

/// A moment of GPS time.
struct GpsTime {
  int week = 0;          ///< Since 6 January 1980, without roll-overs.
  double seconds = 0.0;  ///< Of the week, 0 up to kSecondsOfWeek.

  /// Seconds from `other` to this.
  double operator-(const GpsTime& other) const {
    return (week - other.week) * kSecondsOfWeek + (seconds - other.seconds);
  }
};

/// Without the leap seconds between UTC and GPS time, which do not count where the week is what matters.
///@{
GpsTime GpsTimeOf(Time moment);
Time MomentOf(const GpsTime& time);
///@}

/// Satellites broadcast the week's lowest ten bits alone, which began again in 1999 and 2019 and will in
/// 2038. Gives such a week its high bits so that it comes as near to `pivot` as may be, which is within 512
/// weeks. A week of more than ten bits is given back as it is.
int ResolveWeek(int week, Time pivot);
/// The same around another week.
int NearestWeek(int week, int pivot);

/// A moment whose week was told at another one, within half a week of it: near the week's end the two differ
/// by one.
GpsTime Near(int week, double seconds, double told_at_seconds);

/// A date and time of day, in GPS time.
struct Calendar {
  /// Numbers from 1 on but for hour, minute and second.
  ///@{
  int year, month, day, hour, minute;
  double second;
  ///@}
};

/// With the seconds rounded to that many decimals, which carries over into the minute if need be.
Calendar CalendarOf(const GpsTime& time, int decimals);

}  // namespace gps

#pragma GCC visibility pop
