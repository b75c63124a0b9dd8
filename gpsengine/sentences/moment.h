#pragma once

#include <chrono>
#include <string>

#include "gpsengine/platform/ctime.h"

#pragma GCC visibility push(default)

namespace gps {

/// A moment of UTC.
using Time = std::chrono::sys_time<std::chrono::milliseconds>;

constexpr std::chrono::milliseconds kDay = std::chrono::days(1);  ///< A day without leap seconds.

/// A time in seconds.
inline double Seconds(std::chrono::milliseconds time) {
  return static_cast<double>(time.count()) / 1000.0;
}

/// A position sentence has a time of day alone. Gives it the date that puts it within half a day of `near`.
Time DateTimeOfDay(double seconds_of_day, Time near);

/// The moment of a record.
inline Time MomentOf(const CTime& time) {
  return Time(std::chrono::seconds(time.GetTime()));
}

/// Now, by this computer's clock.
Time Now();

/// "2024-05-14T08:00:01.000Z", appended to a text or as one.
///@{
void AppendIso(std::string& out, Time moment);
std::string IsoText(Time moment);
///@}

}  // namespace gps

#pragma GCC visibility pop
