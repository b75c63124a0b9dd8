#include "host/exports/reporttext.h"

#include "host/records/jsonwriter.h"

namespace host {

std::string Number(double value, int decimals) {
  std::string text;
  AppendFixed(text, value, decimals);
  if (text.starts_with('-')) text.replace(0, 1, "\xE2\x88\x92");
  return text;
}

std::string Whole(long long value) {
  std::string text = std::to_string(value);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, "\xE2\x80\xAF");
  return text;
}

std::string In(const Unit& unit, double value, int decimals) {
  return Number(value * unit.per_metre, decimals) + ' ' + std::string(unit.name);
}

std::string Length(double metres, const UnitSystem& units) {
  if (metres * units.distance.per_metre >= units.far) return In(units.distance, metres, 2);
  return In(units.length, metres, metres < 100.0 ? 1 : 0);
}

std::string Percent(long long part, long long whole) {
  return whole > 0 ? Number(100.0 * static_cast<double>(part) / static_cast<double>(whole), 1) + " %" : "";
}

std::string Span(double seconds) {
  const auto whole = static_cast<long long>(seconds);
  if (whole < 60) return Number(seconds, 1) + " s";
  if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
  const std::string hours =
      std::to_string(whole / 3600 % 24) + " h " + std::to_string(whole / 60 % 60) + " min";
  return whole < 86'400 ? hours : std::to_string(whole / 86'400) + " d " + hours;
}

std::string Time(Moment moment) {
  const std::string iso = IsoText(moment);
  return iso.substr(0, 10) + ' ' + iso.substr(11, iso.substr(19, 4) == ".000" ? 8 : 10) + " UTC";
}

std::string Angle(double degrees, AngleFormat format, char positive, char negative) {
  std::string text = MarkedAngle(degrees, format, positive, negative);
  text.erase(0, text.find_first_not_of(' '));
  for (std::size_t at = 0; (at = text.find(' ', at)) != std::string::npos;) text.replace(at, 1, "\xC2\xA0");
  return text;
}

std::string Place(double latitude, double longitude, AngleFormat format) {
  return Angle(latitude, format, 'N', 'S') + ", " + Angle(longitude, format, 'E', 'W');
}

Grid GridOf(double latitude, double longitude, Projection& projection) {
  const auto place = projection.Of(latitude, longitude);
  if (!place) return {"none there", "none there"};
  const std::string unit = ' ' + projection.UnitName();
  return {Number(place->easting, 3) + unit, Number(place->northing, 3) + unit};
}

}  // namespace host
