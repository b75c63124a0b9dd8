#include "gpsengine/rawdata/gpstime.h"

#include <cmath>

namespace gps {

namespace {

constexpr std::chrono::sys_days kFirstDay{std::chrono::year(1980) / 1 / 6};

}  // namespace

GpsTime GpsTimeOf(Time moment) {
  const auto since = moment - kFirstDay;
  const auto week = std::chrono::floor<std::chrono::weeks>(since);
  return {static_cast<int>(week.count()), static_cast<double>((since - week).count()) / 1000.0};
}

int NearestWeek(int week, int pivot) {
  if (week < 0 || week >= kWeeksOfRound) return week;
  const int rounds = static_cast<int>(std::lround((pivot - week) / static_cast<double>(kWeeksOfRound)));
  return week + (rounds > 0 ? rounds : 0) * kWeeksOfRound;
}

int ResolveWeek(int week, Time pivot) {
  return NearestWeek(week, GpsTimeOf(pivot).week);
}

Time MomentOf(const GpsTime& time) {
  const double seconds = time.week * kSecondsOfWeek + time.seconds;
  return kFirstDay + std::chrono::milliseconds(static_cast<long long>(seconds * 1000.0));
}

GpsTime Near(int week, double seconds, double told_at_seconds) {
  const double ahead = seconds - told_at_seconds;
  if (ahead > kSecondsOfWeek / 2) return {week - 1, seconds};
  if (ahead < -kSecondsOfWeek / 2) return {week + 1, seconds};
  return {week, seconds};
}

Calendar CalendarOf(const GpsTime& time, int decimals) {
  const auto ticks_of_second = static_cast<long long>(std::llround(std::pow(10.0, decimals)));
  const long long ticks = std::llround(time.seconds * static_cast<double>(ticks_of_second));
  const long long whole = ticks / ticks_of_second;
  const auto days = std::chrono::days(time.week * 7 + whole / 86400);
  const std::chrono::year_month_day date(kFirstDay + days);
  const auto of_day = static_cast<int>(whole % 86400);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          of_day / 3600,
          of_day / 60 % 60,
          of_day % 60 + static_cast<double>(ticks % ticks_of_second) / static_cast<double>(ticks_of_second)};
}

}  // namespace gps
