#include "simulator/nmea.h"

#include <algorithm>
#include <cmath>

#include "simulator/text.h"

namespace simulator {
namespace {

constexpr double kVariation = 3.2;  // degrees east, of the compass
constexpr std::size_t kGsaPlaces = 12, kGsvPlaces = 4;

std::string TimeOfDay(const Epoch& e) {
  const auto day = std::chrono::floor<std::chrono::days>(e.utc);
  const std::chrono::hh_mm_ss time(e.utc - day);
  return Format("%02d%02d%02d.%02d", static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                static_cast<int>(time.subseconds().count() / 10));
}

std::chrono::year_month_day Date(const Epoch& e) {
  return std::chrono::floor<std::chrono::days>(e.utc);
}

// ddmm.mmmm and its letter. Rounded as one whole number, so that 60 minutes never show.
std::string Angle(double radians, int degree_digits, int minute_digits, const char* letters) {
  const double scale = std::pow(10, minute_digits);
  const auto units = std::llround(std::abs(Degrees(radians)) * 60 * scale);
  const auto per_degree = 60 * static_cast<long long>(scale);
  return Format("%0*lld%0*.*f,%c", degree_digits, units / per_degree, minute_digits + 3, minute_digits,
                static_cast<double>(units % per_degree) / scale, letters[radians < 0 ? 1 : 0]);
}

std::string Place(const Epoch& e, int minute_digits) {
  if (e.quality == 0) return ",,,";
  return Angle(e.truth.geodetic.latitude, 2, minute_digits, "NS") + ',' +
         Angle(e.truth.geodetic.longitude, 3, minute_digits, "EW");
}

struct Motion {
  double speed, course;  // metres per second, degrees
};

Motion MotionOf(const Truth& truth) {
  const Level v = ToLevel(truth.velocity, truth.geodetic);
  const double speed = std::hypot(v.east, v.north);
  if (speed < 0.01) return {0, 0};
  const double course = Degrees(std::atan2(v.east, v.north));
  return {speed, course < 0 ? course + 360 : course};
}

// Degrees with one decimal that never read 360.0.
std::string Course(double degrees) {
  return Format("%05.1f", std::fmod(std::round(degrees * 10) / 10, 360.0));
}

char ModeLetter(const Epoch& e) {
  return e.quality == 0 ? 'N' : e.quality == 1 ? 'A' : 'D';
}

constexpr double kKnot = 1852.0 / 3600;

}  // namespace

int UsedCount(const std::vector<View>& views) {
  return static_cast<int>(std::count_if(views.begin(), views.end(), [](const View& v) { return v.used; }));
}

unsigned char Xor(std::string_view text) {
  unsigned char sum = 0;
  for (const char c : text) sum = static_cast<unsigned char>(sum ^ static_cast<unsigned char>(c));
  return sum;
}

std::string Sentence(std::string_view body) {
  return Format("$%.*s*%02X\r\n", static_cast<int>(body.size()), body.data(), Xor(body));
}

std::string Gga(const Epoch& e) {
  const std::string height =
      e.quality == 0
          ? ",M,,M"
          : Format("%.2f,M,%.1f,M", e.truth.geodetic.height - e.geoid_separation, e.geoid_separation);
  return Sentence(Format("GPGGA,%s,%s,%d,%02d,%.1f,%s,%s", TimeOfDay(e).c_str(),
                         Place(e, e.minute_digits).c_str(), e.quality, UsedCount(e.views), e.dilution.hdop,
                         height.c_str(), e.quality > 1 ? "4.0,0120" : ","));
}

std::string Gsa(const Epoch& e) {
  std::string numbers;
  std::size_t places = 0;
  for (const View& view : e.views) {
    if (!view.used || places == kGsaPlaces) continue;
    numbers += Format(",%02d", view.prn);
    ++places;
  }
  numbers.append(kGsaPlaces - places, ',');
  return Sentence(Format("GPGSA,A,%d%s,%.1f,%.1f,%.1f", e.quality == 0 ? 1 : 3, numbers.c_str(),
                         e.dilution.pdop, e.dilution.hdop, e.dilution.vdop));
}

std::string Gsv(const Epoch& e) {
  const std::size_t total = std::max<std::size_t>(1, (e.views.size() + kGsvPlaces - 1) / kGsvPlaces);
  std::string group;
  for (std::size_t page = 0; page < total; ++page) {
    std::string body = Format("GPGSV,%zu,%zu,%02zu", total, page + 1, e.views.size());
    for (std::size_t i = page * kGsvPlaces; i < std::min(e.views.size(), (page + 1) * kGsvPlaces); ++i) {
      const View& view = e.views[i];
      body += Format(",%02d,%02ld,%03ld,%02d", view.prn, std::lround(Degrees(view.elevation)),
                     std::lround(Degrees(view.azimuth)) % 360, view.snr);
    }
    group += Sentence(body);
  }
  return group;
}

std::string Vtg(const Epoch& e) {
  const Motion m = MotionOf(e.truth);
  return Sentence(Format("GPVTG,%s,T,%s,M,%.2f,N,%.2f,K,%c", Course(m.course).c_str(),
                         Course(m.course + 360 - kVariation).c_str(), m.speed / kKnot, m.speed * 3.6,
                         ModeLetter(e)));
}

std::string Rmc(const Epoch& e) {
  const Motion m = MotionOf(e.truth);
  const auto date = Date(e);
  return Sentence(Format(
      "GPRMC,%s,%c,%s,%.2f,%s,%02u%02u%02d,%.1f,E,%c", TimeOfDay(e).c_str(), e.quality == 0 ? 'V' : 'A',
      Place(e, 5).c_str(), m.speed / kKnot, Course(m.course).c_str(), static_cast<unsigned>(date.day()),
      static_cast<unsigned>(date.month()), static_cast<int>(date.year()) % 100, kVariation, ModeLetter(e)));
}

std::string Gll(const Epoch& e) {
  return Sentence(Format("GPGLL,%s,%s,%c,%c", Place(e, 5).c_str(), TimeOfDay(e).c_str(),
                         e.quality == 0 ? 'V' : 'A', ModeLetter(e)));
}

std::string Zda(const Epoch& e) {
  const auto date = Date(e);
  return Sentence(Format("GPZDA,%s,%02u,%02u,%04d,00,00", TimeOfDay(e).c_str(),
                         static_cast<unsigned>(date.day()), static_cast<unsigned>(date.month()),
                         static_cast<int>(date.year())));
}

}  // namespace simulator
