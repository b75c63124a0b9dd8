#include "simulator/gpstime.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace simulator {
namespace {

using namespace std::chrono;

constexpr int kWeekSeconds = 604800;
constexpr sys_seconds kGpsEpoch = sys_days{1980y / January / 6};

// From each of these days on GPS time is one second further ahead of UTC.
constexpr sys_days kLeapSeconds[] = {
    1981y / July / 1,    1982y / July / 1,    1983y / July / 1,    1985y / July / 1,    1988y / January / 1,
    1990y / January / 1, 1991y / January / 1, 1992y / July / 1,    1993y / July / 1,    1994y / July / 1,
    1996y / January / 1, 1997y / July / 1,    1999y / January / 1, 2006y / January / 1, 2009y / January / 1,
    2012y / July / 1,    2015y / July / 1,    2017y / January / 1,
};

}  // namespace

double operator-(const GpsTime& a, const GpsTime& b) {
  return static_cast<double>(a.week - b.week) * kWeekSeconds + (a.seconds - b.seconds);
}

GpsTime operator+(const GpsTime& time, double seconds) {
  const double sum = time.seconds + seconds;
  const double weeks = std::floor(sum / kWeekSeconds);
  return {time.week + static_cast<int>(weeks), sum - weeks * kWeekSeconds};
}

GpsTime FromUtc(sys_seconds utc) {
  const auto leap = std::upper_bound(std::begin(kLeapSeconds), std::end(kLeapSeconds), utc) - kLeapSeconds;
  const auto elapsed = (utc - kGpsEpoch).count() + leap;
  return {static_cast<int>(elapsed / kWeekSeconds), static_cast<double>(elapsed % kWeekSeconds)};
}

}  // namespace simulator
