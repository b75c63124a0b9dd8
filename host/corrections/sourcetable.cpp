#include "host/corrections/sourcetable.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "gpsengine/face/words.h"
#include "host/records/jsonwriter.h"
#include "host/run/face.h"

namespace host {

namespace {

/// Fields of a line "STR;…", by the standard's order.
enum Column {
  name = 1,
  identifier,
  format,
  details,
  carrier,
  systems,
  network,
  country,
  latitude,
  longitude,
  nmea,
  solution,
  generator,
  compression,
  authentication,
  fee
};

/// A field by its number, as a terminal can show it.
std::string FieldOf(std::string_view line, int number) {
  for (; number > 0; --number) {
    const std::size_t end = line.find(';');
    if (end == std::string_view::npos) return {};
    line.remove_prefix(end + 1);
  }
  std::string field(line.substr(0, line.find(';')));
  std::replace_if(
      field.begin(), field.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }, '?');
  return field;
}

std::optional<double> AngleOf(const std::string& field, double most) {
  auto angle = ReadNumber<double>(field);
  if (angle && most > 90.0 && *angle > 180.0 && *angle <= 360.0) *angle -= 360.0;  // casters write both
  return angle && std::fabs(*angle) <= most ? angle : std::nullopt;
}

double Kilometres(const Degrees2& from, const Degrees2& to) {
  constexpr double kRadius = 6371.0, kDegree = std::numbers::pi / 180.0;
  const double north = std::sin((to.first - from.first) * kDegree / 2.0);
  const double east = std::sin((to.second - from.second) * kDegree / 2.0);
  const double a =
      north * north + std::cos(from.first * kDegree) * std::cos(to.first * kDegree) * east * east;
  return 2.0 * kRadius * std::asin(std::sqrt(std::min(a, 1.0)));
}

std::string CarrierOf(const std::string& field) {
  if (field == "0") return "no";
  if (field == "1") return "L1";
  return field == "2" ? "L1+L2" : field;
}

std::string AuthenticationOf(const std::string& field) {
  if (field == "N") return "none";
  if (field == "B") return "basic";
  return field == "D" ? "digest" : field;
}

MountPoint MountPointOf(std::string_view line, const std::optional<Degrees2>& near) {
  MountPoint point;
  point.name = FieldOf(line, name);
  point.identifier = FieldOf(line, identifier);
  point.format = FieldOf(line, format);
  point.details = FieldOf(line, details);
  point.carrier = CarrierOf(FieldOf(line, carrier));
  point.systems = FieldOf(line, systems);
  point.country = FieldOf(line, country);
  point.latitude = AngleOf(FieldOf(line, latitude), 90.0);
  point.longitude = AngleOf(FieldOf(line, longitude), 180.0);
  point.needs_gga = FieldOf(line, nmea) == "1";
  point.authentication = AuthenticationOf(FieldOf(line, authentication));
  point.has_fee = FieldOf(line, fee) == "Y";
  if (near && point.latitude && point.longitude)
    point.distance = Kilometres(*near, {*point.latitude, *point.longitude});
  return point;
}

/// What a table for people has of each.
std::vector<std::string> RowOf(const MountPoint& point) {
  const auto angle = [](const std::optional<double>& value) { return value ? Print("%.2f", *value) : "-"; };
  return {point.name,
          point.format,
          point.carrier,
          point.systems,
          point.country,
          angle(point.latitude),
          angle(point.longitude),
          point.distance ? Print("%.0f", *point.distance) : "-",
          point.needs_gga ? "yes" : "no",
          point.authentication + (point.has_fee ? ", fee" : ""),
          point.identifier};
}

}  // namespace

std::optional<Degrees2> PlaceOf(const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos) return std::nullopt;
  const auto latitude = AngleOf(text.substr(0, comma), 90.0);
  const auto longitude = AngleOf(text.substr(comma + 1), 180.0);
  return latitude && longitude ? std::optional(Degrees2(*latitude, *longitude)) : std::nullopt;
}

std::vector<MountPoint> MountPointsOf(std::string_view table, const std::optional<Degrees2>& near) {
  std::vector<MountPoint> points;
  while (!table.empty()) {
    const std::size_t end = std::min(table.find('\n'), table.size());
    std::string_view line = table.substr(0, end);
    table.remove_prefix(std::min(end + 1, table.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.starts_with("STR;")) points.push_back(MountPointOf(line, near));
  }
  static constexpr double kFar = 1e9;
  std::stable_sort(points.begin(), points.end(), [](const MountPoint& one, const MountPoint& other) {
    return one.distance.value_or(kFar) < other.distance.value_or(kFar);
  });
  return points;
}

std::string MountPointsAsTable(const std::vector<MountPoint>& points) {
  std::vector<std::vector<std::string>> rows = {
      {"MOUNT", "FORMAT", "CARRIER", "SYSTEMS", "COUNTRY", "LAT", "LON", "KM", "GGA", "PASSWORD", "PLACE"}};
  for (const MountPoint& point : points) rows.push_back(RowOf(point));
  std::vector<std::size_t> widths(rows.front().size(), 0);
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) line += Padded(row[i], widths[i] + 2);
    text += line.erase(line.find_last_not_of(' ') + 1) + '\n';
  }
  return text;
}

std::string MountPointsAsJson(const std::vector<MountPoint>& points) {
  std::string text;
  JsonWriter json(text);
  json.BeginArray();
  for (const MountPoint& point : points) {
    json.BeginObject();
    json.Key("mount");
    json.Utf8(point.name);
    json.Known("place", point.identifier);
    json.Known("format", point.format);
    json.Known("details", point.details);
    json.Known("carrier", point.carrier);
    json.Known("systems", point.systems);
    json.Known("country", point.country);
    if (point.latitude) json.Member("lat", *point.latitude);
    if (point.longitude) json.Member("lon", *point.longitude);
    if (point.distance) json.MemberFixed("km", *point.distance, 1);
    json.Member("gga", point.needs_gga);
    json.Known("authentication", point.authentication);
    json.Member("fee", point.has_fee);
    json.EndObject();
  }
  json.EndArray();
  return text + '\n';
}

}  // namespace host
