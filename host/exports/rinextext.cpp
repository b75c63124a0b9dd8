#include "host/exports/rinextext.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "gpsengine/face/words.h"
#include "gpsengine/platform/ctime.h"
#include "host/records/units.h"

namespace host {

std::string HeaderLine(std::string content, std::string_view label) {
  content.resize(60, ' ');
  std::string line = content.append(label);
  return line.append(label.size() < 20 ? 20 - label.size() : 0, ' ') + '\n';
}

std::string FileBeginning(double version, std::string_view kind) {
  const std::string first = Print("%9.2f%11s%s", version, "", std::string(kind).c_str());
  const std::time_t now = CTime::GetCurrentTime().GetTime();
  std::tm utc{};
  gmtime_r(&now, &utc);
  std::array<char, 32> date{};
  std::strftime(date.data(), date.size(), "%Y%m%d %H%M%S UTC", &utc);
  const std::string program = Print("%-20s%-20s%-20s", "gpsengine", "", date.data());
  return HeaderLine(first, "RINEX VERSION / TYPE") + HeaderLine(program, "PGM / RUN BY / DATE");
}

// A day of measurements is tens of millions of numbers: this takes a tenth of what printf takes.
void AppendMeasurement(std::string& text, double value) {
  constexpr double kMost = 999'999'999.0;
  if (!(std::fabs(value) <= kMost) || value == 0.0) {
    text.append(kMeasurementColumns, ' ');
    return;
  }
  const long long thousandths = std::llrint(value * 1000.0);
  auto rest = static_cast<unsigned long long>(std::llabs(thousandths));
  std::array<char, kMeasurementColumns> field;
  field.fill(' ');
  std::size_t at = kMeasurementColumns;
  for (int digits = 0; digits < 4 || rest > 0; ++digits) {
    if (digits == 3) field[--at] = '.';
    field[--at] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  }
  if (thousandths < 0) field[--at] = '-';
  text.append(field.data(), kMeasurementColumns);
}

void AppendTerm(std::string& text, double value) {
  std::string number = Print("%19.12E", std::isfinite(value) ? value : 0.0);
  std::replace(number.begin(), number.end(), 'E', 'D');
  text += number;
}

std::array<double, 3> Cartesian(double latitude, double longitude, double height) {
  constexpr double kAxis = 6378137.0, kFlattening = 1.0 / 298.257223563,
                   kE2 = kFlattening * (2.0 - kFlattening);
  const double phi = latitude / kDegrees, lambda = longitude / kDegrees;
  const double n = kAxis / std::sqrt(1.0 - kE2 * std::sin(phi) * std::sin(phi));
  return {(n + height) * std::cos(phi) * std::cos(lambda), (n + height) * std::cos(phi) * std::sin(lambda),
          (n * (1.0 - kE2) + height) * std::sin(phi)};
}

}  // namespace host
