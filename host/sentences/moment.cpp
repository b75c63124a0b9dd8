#include "host/sentences/moment.h"

#include <array>
#include <chrono>
#include <cmath>

namespace host {

namespace {

// A number of that many digits, and the character after it.
char* Write(char* to, int value, int width, char behind) {
  for (int place = width; place > 0; value /= 10) to[--place] = static_cast<char>('0' + value % 10);
  to[width] = behind;
  return to + width + 1;
}

}  // namespace

Moment DateTimeOfDay(double seconds_of_day, Moment near) {
  const Moment time = std::llround(seconds_of_day * 1000.0);
  // Midnight lies as near to the noon of one day as to that of another: it begins its day.
  const auto days =
      std::chrono::floor<std::chrono::days>(std::chrono::milliseconds(near - time + kDay / 2 - 1));
  return days.count() * kDay + time;
}

Moment Now() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

std::string IsoText(Moment moment) {
  std::string text;
  AppendIso(text, moment);
  return text;
}

void AppendIso(std::string& out, Moment moment) {
  const auto time = std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(moment));
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const auto ms = static_cast<int>((time - day).count());
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

}  // namespace host
