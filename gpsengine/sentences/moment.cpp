#include "gpsengine/sentences/moment.h"

#include <array>
#include <chrono>
#include <cmath>

namespace gps {

namespace {

// A number of that many digits, and the character after it.
char* Write(char* to, int value, int width, char behind) {
  for (int place = width; place > 0; value /= 10) to[--place] = static_cast<char>('0' + value % 10);
  to[width] = behind;
  return to + width + 1;
}

}  // namespace

Time DateTimeOfDay(double seconds_of_day, Time near) {
  const std::chrono::milliseconds time(std::llround(seconds_of_day * 1000.0));
  // Midnight lies as near to the noon of one day as to that of another: it begins its day.
  return std::chrono::floor<std::chrono::days>(near - time + kDay / 2 - std::chrono::milliseconds(1)) + time;
}

Time Now() {
  return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

std::string IsoText(Time moment) {
  std::string text;
  AppendIso(text, moment);
  return text;
}

void AppendIso(std::string& out, Time moment) {
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(day);
  const auto ms = static_cast<int>((moment - day).count());
  std::array<char, 24> text;
  char* to = Write(text.data(), static_cast<int>(date.year()), 4, '-');
  to = Write(to, static_cast<int>(static_cast<unsigned>(date.month())), 2, '-');
  to = Write(to, static_cast<int>(static_cast<unsigned>(date.day())), 2, 'T');
  to = Write(to, ms / 3'600'000, 2, ':');
  to = Write(to, ms / 60'000 % 60, 2, ':');
  to = Write(to, ms / 1000 % 60, 2, '.');
  Write(to, ms % 1000, 3, 'Z');
  out.append(text.data(), text.size());
}

}  // namespace gps
