#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "host/records/fixkind.h"
#include "host/tui/dashboard.h"
#include "host/tui/panels.h"

namespace host {

namespace {

constexpr int kLeastPlotRows = 5;

/// A length in no more columns than there are, with as many decimals as there is room for.
std::string ShortLength(const std::optional<double>& metres, const Unit& unit) {
  if (!metres) return "-";
  const double value = *metres * unit.per_metre;
  const int decimals = std::fabs(value) < 10.0 ? 3 : std::fabs(value) < 100.0 ? 2 : 0;
  return Print(std::fabs(value) < 1e6 ? "%.*f" : "%.*g", decimals, value);
}

/// The rows of the panel, from the top.
class SurveyLines {
 public:
  SurveyLines(Pane pane, const Unit& unit) : pane_(pane), unit_(unit) {}

  void Add(std::string_view label, const std::string& value, const std::string& unit = "") {
    pane_.Text(row_, 1, label, Style::label);
    pane_.Text(row_, 31 - Width(value), value, Style::value);
    pane_.Text(row_++, 31, unit);
  }
  void Say(std::string_view text, Style style) { pane_.Text(row_++, 1, text, style); }
  /// A table of three lengths for each kind of fix, with as many kinds as there is room for.
  using Lengths = std::array<std::optional<double>, 3>;
  void AddTable(std::string_view title, const std::array<std::string_view, 3>& heads,
                const std::vector<std::pair<std::string_view, Lengths>>& rows) {
    if (row_ + 1 >= pane_.Rows()) return;
    pane_.Text(row_, 1, title, Style::label);
    for (int i = 0; i < 3; ++i) Cell(i, heads[static_cast<std::size_t>(i)], Style::label);
    ++row_;
    for (const auto& [name, lengths] : rows) {
      pane_.Text(row_, 1, name);
      for (int i = 0; i < 3; ++i)
        Cell(i, ShortLength(lengths[static_cast<std::size_t>(i)], unit_), Style::value);
      ++row_;
    }
  }
  int Row() const { return row_; }

 private:
  void Cell(int column, std::string_view text, Style style) {
    pane_.Text(row_, 21 + 8 * column - Width(text), text, style);
  }

  Pane pane_;
  const Unit& unit_;
  int row_ = 0;
};

using Rows = std::vector<std::pair<std::string_view, SurveyLines::Lengths>>;

/// A row for all fixes and, where there are several kinds, one for each.
template <class Lengths>
Rows RowsOf(const SurveyResult& all, const std::map<int, SurveyResult>& kinds, Lengths&& lengths) {
  Rows rows;
  if (kinds.size() > 1) rows.emplace_back("all", lengths(all));
  for (const auto& [signal, result] : kinds) rows.emplace_back(NameOfSignal(signal), lengths(result));
  return rows;
}

void AddMean(SurveyLines& lines, const SurveyResult& all, const Display& display) {
  const AngleFormat format = display.Angles();
  lines.Add("Fixes", Print("%lld", all.fixes));
  lines.Add("Mean lat.", MarkedAngle(all.latitude, format, 'N', 'S'));
  lines.Add("Mean lon.", MarkedAngle(all.longitude, format, 'E', 'W'));
  if (Projection* const projection = display.projection.get()) {
    if (const auto place = projection->Of(all.latitude, all.longitude)) {
      lines.Add("Mean easting", Print("%.3f", place->easting), ' ' + projection->UnitName());
      lines.Add("Mean northing", Print("%.3f", place->northing), ' ' + projection->UnitName());
    }
  }
  const Unit& unit = display.System().length;
  lines.Add("Mean height", all.height ? Print("%.3f", *all.height * unit.per_metre) : "-",
            ' ' + std::string(unit.name));
}

/// The fixes from above, north up, about their mean.
void DrawCloud(Pane pane, int top, const Survey& survey, const SurveyResult& all, const Unit& unit) {
  // A character is about twice as high as it is wide.
  const int radius = std::min((pane.Rows() - top - 1) / 2, (pane.Columns() - 2) / 4);
  if (2 * radius + 1 < kLeastPlotRows) return;
  const int row = top + radius, column = pane.Columns() / 2;
  const double reach = std::max(1.5 * all.r95, 1e-3);  // metres from the middle to the edge
  std::map<std::pair<int, int>, int> counts;
  int most = 1;
  for (const Survey::Point& point : survey.Points()) {
    if (std::max(std::fabs(point.east), std::fabs(point.north)) > reach) continue;
    const int y = row - static_cast<int>(std::lround(point.north / reach * radius));
    const int x = column + static_cast<int>(std::lround(2.0 * point.east / reach * radius));
    most = std::max(most, ++counts[{y, x}]);
  }
  for (int y = row - radius; y <= row + radius; ++y) pane.Put(y, column, U'│', Style::frame);
  for (int x = column - 2 * radius; x <= column + 2 * radius; ++x) pane.Put(row, x, U'─', Style::frame);
  for (const auto& [spot, count] : counts) {
    const char32_t glyph = 4 * count > most ? U'●' : 16 * count > most ? U'○' : U'·';
    pane.Put(spot.first, spot.second, glyph, Style::used);
  }
  pane.Put(row - radius, column, U'N', Style::label);
  pane.Text(row + radius, 1, "edge " + ShortLength(reach, unit) + ' ' + std::string(unit.name), Style::label);
}

}  // namespace

void DrawSurvey(Pane pane, const View& view) {
  Pane inside = pane.Frame("Survey");
  const Survey& survey = view.readings.survey;
  if (survey.Fixes() == 0) {
    inside.Text(0, 1, "no fix so far", Style::dim);
    return;
  }
  const SurveyResult all = survey.Result();
  const auto kinds = survey.ByKind();
  const Unit& unit = view.display.System().length;
  const std::string name(unit.name);
  SurveyLines lines(inside, unit);
  if (HasMoved(all)) lines.Say("the receiver has moved: n begins again", Style::warn);
  AddMean(lines, all, view.display);
  using Lengths = SurveyLines::Lengths;
  lines.AddTable("Deviation", {"east", "north", "up " + name}, RowsOf(all, kinds, [](const SurveyResult& of) {
                   return Lengths{of.east, of.north, of.up};
                 }));
  lines.AddTable("Radius", {"CEP50", "95 %", "2DRMS"}, RowsOf(all, kinds, [](const SurveyResult& of) {
                   return Lengths{of.cep50, of.r95, of.drms2};
                 }));
  if (kinds.size() > 1) {
    Rows rows;
    for (const auto& [signal, of] : kinds) {
      const Offset off = OffsetOf(all.latitude, all.longitude, of.latitude, of.longitude);
      std::optional<double> up;
      if (of.height && all.height) up = *of.height - *all.height;
      rows.emplace_back(NameOfSignal(signal), Lengths{off.east, off.north, up});
    }
    lines.AddTable("Off mean", {"east", "north", "up"}, rows);
  }
  DrawCloud(inside, lines.Row(), survey, all, unit);
}

}  // namespace host
