#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "host/records/units.h"
#include "host/tui/dashboard.h"
#include "host/tui/panels.h"

namespace host {

namespace {

/// A satellite grows pale with the position that it was told of with.
Style StyleOf(const Satellite& satellite, const Readings& readings) {
  if (readings.IsSilent()) return Style::dim;
  return satellite.used ? Style::used : Style::in_view;
}

/// A whole number with its unit, or a dash, whose last character stands in that column.
std::string Column(const std::optional<int>& value, const char* unit, int width) {
  const std::string text = (value ? std::to_string(*value) : "-") + unit;
  return std::string(static_cast<std::size_t>(std::max(width - Width(text), 0)), ' ') + text;
}

/// The signals of satellites as bars.
class BarChart {
 public:
  BarChart(Pane pane, const std::vector<Satellite>& satellites, const Readings& readings)
      : pane_(pane), satellites_(satellites), readings_(readings) {
    for (const auto& satellite : satellites) full_ = std::max(full_, satellite.signal.value_or(0));
  }

  /// Names stand below the bars, strengths on top of them.
  void DrawWide(int step) {
    const int base = pane_.Rows() - 2;
    int column = 1;
    for (const Satellite& satellite : satellites_) {
      const int height = DrawBar(satellite, column, step - 1, base);
      if (satellite.signal)
        pane_.Text(base - height, column, Print("%2d", *satellite.signal), StyleOf(satellite, readings_));
      pane_.Text(base + 1, column, satellite.id.Name(), StyleOf(satellite, readings_));
      column += step;
    }
  }
  /// Bars side by side, one system after the other, of which the letters stand below.
  void DrawNarrow() {
    const int base = pane_.Rows() - 2;
    int column = 1;
    const Satellite* last = nullptr;
    for (const Satellite& satellite : satellites_) {
      const bool begins = last == nullptr || last->id.system != satellite.id.system;
      if (begins && last != nullptr) ++column;
      DrawBar(satellite, column, 1, base);
      if (begins) pane_.Text(base + 1, column, satellite.id.Name().substr(0, 1), Style::label);
      ++column;
      last = &satellite;
    }
  }

 private:
  /// Returns the height in rows.
  int DrawBar(const Satellite& satellite, int column, int width, int base) {
    constexpr char32_t kEighths[] = {U' ', U'▁', U'▂', U'▃', U'▄', U'▅', U'▆', U'▇'};
    const int eighths = satellite.signal.value_or(0) * 8 * base / full_;
    for (int row = 0; row < base; ++row) {
      const int part = std::clamp(eighths - row * 8, 0, 8);
      char32_t glyph = part == 8 ? U'█' : kEighths[part];
      if (!satellite.used && part > 0) glyph = part >= 4 || row == 0 ? U'▒' : U' ';
      for (int i = 0; i < width; ++i) pane_.Put(base - row, column + i, glyph, StyleOf(satellite, readings_));
    }
    return std::min((eighths + 7) / 8, base);
  }

  Pane pane_;
  const std::vector<Satellite>& satellites_;
  const Readings& readings_;
  int full_ = 50;  // what a good receiver reaches, unless this one counts otherwise
};

}  // namespace

void DrawSky(Pane pane, const View& view) {
  Pane inside = pane.Frame(pane.Columns() >= 30 ? "Sky   ● used  ○ in view" : "Sky");
  // A character is about twice as high as it is wide.
  const int radius = std::min((inside.Rows() - 1) / 2, (inside.Columns() - 5) / 4);
  if (radius < 2) return;
  const int row = inside.Rows() / 2, column = inside.Columns() / 2;
  const auto at = [&](double azimuth, double distance) {
    return std::pair(row - static_cast<int>(std::lround(radius * distance * std::cos(azimuth))),
                     column + static_cast<int>(std::lround(2.0 * radius * distance * std::sin(azimuth))));
  };
  for (const double distance : {1.0, 0.5}) {
    const int step = std::max(static_cast<int>(30 / (radius * distance)), 1);
    for (int degrees = 0; degrees < 360; degrees += step) {
      const auto [y, x] = at(degrees / kDegrees, distance);
      inside.Put(y, x, U'·', Style::frame);
    }
  }
  inside.Put(row, column, U'+', Style::frame);
  constexpr char32_t kWinds[] = {U'N', U'E', U'S', U'W'};
  for (int wind = 0; wind < 4; ++wind) {
    const auto [y, x] = at(wind * 90 / kDegrees, 1.0);
    inside.Put(y, x, kWinds[wind], Style::label);
  }
  for (const Satellite& satellite : view.readings.sky.satellites) {
    if (!satellite.elevation || !satellite.azimuth) continue;  // known by number alone
    const double distance = std::clamp(1.0 - *satellite.elevation / 90.0, 0.0, 1.0);
    const auto [y, x] = at(*satellite.azimuth / kDegrees, distance);
    const Style style = StyleOf(satellite, view.readings);
    const std::string name = satellite.id.Name();
    const bool left = x + 1 + Width(name) > inside.Columns();
    inside.Put(y, x, satellite.used ? U'●' : U'○', style);
    inside.Text(y, left ? x - Width(name) : x + 1, name, style);
  }
}

void DrawSignals(Pane pane, const View& view) {
  Pane inside = pane.Frame("Signal   █ used  ▒ in view");
  std::vector<Satellite> satellites = view.readings.sky.satellites;
  if (satellites.empty()) {
    inside.Text(0, 1, "no satellites reported", Style::dim);
    return;
  }
  constexpr int kLeast = 4, kMost = 5;  // columns a bar, for its name and a blank
  const int room = inside.Columns() - 1;
  const auto count = [&] { return std::max(static_cast<int>(satellites.size()), 1); };
  // Of many satellites those that are heard matter.
  if (count() * kLeast > room) std::erase_if(satellites, [](const auto& one) { return !one.signal; });
  BarChart chart(inside, satellites, view.readings);
  const int step = std::min(room / count(), kMost);
  step >= kLeast ? chart.DrawWide(step) : chart.DrawNarrow();
}

void DrawSatellites(Pane pane, const View& view) {
  Pane inside = pane.Frame("Satellites");
  inside.Text(0, 1, "Number  Elevation  Azimuth  Signal", Style::label);
  std::vector<Satellite> satellites = view.readings.sky.satellites;
  const auto room = static_cast<std::size_t>(std::max(inside.Rows() - 1, 0));
  const std::size_t hidden = satellites.size() > room ? satellites.size() - room + 1 : 0;
  if (hidden > 0) {
    std::stable_sort(satellites.begin(), satellites.end(), [](const auto& a, const auto& b) {
      return std::pair(a.used, a.signal) > std::pair(b.used, b.signal);
    });
    satellites.resize(satellites.size() - std::min(hidden, satellites.size()));
  }
  int row = 1;
  for (const Satellite& satellite : satellites) {
    const Style style = StyleOf(satellite, view.readings);
    inside.Put(row, 1, satellite.used ? U'●' : U'○', style);
    inside.Text(row++, 2,
                Print("%5s", satellite.id.Name().c_str()) + Column(satellite.elevation, "°", 11) +
                    Column(satellite.azimuth, "°", 9) + Column(satellite.signal, "", 8),
                style);
  }
  if (hidden > 0) inside.Text(row, 1, Print("and %zu more", hidden), Style::label);
}

}  // namespace host
