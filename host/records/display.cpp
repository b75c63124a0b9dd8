#include "host/records/display.h"

#include <cmath>

#include "gpsengine/face/words.h"
#include "host/records/jsonwriter.h"
#include "host/run/face.h"

namespace host {

namespace {

constexpr Unit kFeet{"ft", 1.0 / 0.3048};
constexpr Unit kKilometresAnHour{"km/h", 3.6};
constexpr Unit kMilesAnHour{"mph", 3600.0 / 1609.344};

// In the order of Units.
constexpr UnitSystem kSystems[] = {
    {{"m", 1.0}, {"km", 1e-3}, 10.0, kKilometresAnHour, {kKnots, kKilometresAnHour}},
    {kFeet, {"mi", 1.0 / 1609.344}, 1.0, kMilesAnHour, {kMilesAnHour, kKnots}},
    {kFeet, {"nmi", 1.0 / 1852.0}, 1.0, kKnots, {kKnots, kKilometresAnHour}},
};

struct Marks {
  const char *degree, *minute, *second, *gap;
};

std::string Write(double degrees, AngleFormat format, char hemisphere, const Marks& marks) {
  // Counted in the last place that is shown, so that no 60 comes of rounding.
  constexpr long long kMinute = 100'000, kSecond = 10'000;
  if (format == AngleFormat::minutes) {
    const long long parts = std::llround(degrees * 60 * kMinute);
    return Print("%3lld%s %02lld.%05lld%s%s%c", parts / (60 * kMinute), marks.degree, parts / kMinute % 60,
                 parts % kMinute, marks.minute, marks.gap, hemisphere);
  }
  if (format == AngleFormat::seconds) {
    const long long parts = std::llround(degrees * 3600 * kSecond);
    return Print("%3lld%s %02lld%s %02lld.%04lld%s%s%c", parts / (3600 * kSecond), marks.degree,
                 parts / (60 * kSecond) % 60, marks.minute, parts / kSecond % 60, parts % kSecond,
                 marks.second, marks.gap, hemisphere);
  }
  return Print("%11.7f%s%s%c", degrees, marks.degree, marks.gap, hemisphere);
}

void AppendTwo(std::string& out, int value) {
  out += {static_cast<char>('0' + value / 10 % 10), static_cast<char>('0' + value % 10)};
}

}  // namespace

const UnitSystem& SystemOf(Units units) {
  return kSystems[static_cast<int>(units)];
}

std::string MarkedAngle(double degrees, AngleFormat format, char positive, char negative) {
  return Write(std::fabs(degrees), format, degrees < 0.0 ? negative : positive, {"°", "'", "\"", " "});
}

std::string PlainAngle(double degrees, AngleFormat format, char positive, char negative) {
  return Write(std::fabs(degrees), format, degrees < 0.0 ? negative : positive, {"", "", "", ""});
}

std::string TimeText(std::int64_t seconds) {
  std::string text;
  AppendTimeOfDay(text, static_cast<double>(seconds % 86'400));
  return text.erase(8);
}

void AppendTimeOfDay(std::string& out, double seconds) {
  const auto hundredths = static_cast<int>(std::lround(seconds * 100.0));
  AppendTwo(out, hundredths / 360'000);
  out += ':';
  AppendTwo(out, hundredths / 6000 % 60);
  out += ':';
  AppendTwo(out, hundredths / 100 % 60);
  out += '.';
  AppendTwo(out, hundredths % 100);
}

void AppendPadded(std::string& out, double value, int decimals, std::size_t width) {
  const auto start = out.size();
  AppendFixed(out, value, decimals);
  if (const auto size = out.size() - start; size < width) out.insert(start, width - size, ' ');
}

}  // namespace host
