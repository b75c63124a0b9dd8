#include "host/tui/dashboard.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "host/tui/panels.h"

namespace host {

namespace {

constexpr int kLeastRows = 8, kLeastColumns = 36;
constexpr int kFixRows = 11, kFixColumns = 40;

/// Eastings and northings take two more, corrections one.
int FixRows(const View& view) {
  return kFixRows + (view.display.projection ? 2 : 0) + (view.corrections ? 1 : 0);
}

using Panel = void (*)(Pane, const View&);

/// Which panels there is room for, and where.
class Layout {
 public:
  Layout(const Canvas& canvas, const View& view);
  const std::vector<std::pair<Panel, Area>>& Panels() const { return panels_; }
  bool Has(Panel panel) const {
    return std::any_of(panels_.begin(), panels_.end(), [=](const auto& one) { return one.first == panel; });
  }

 private:
  void Add(Panel panel, const Area& area) { panels_.emplace_back(panel, area); }
  void InOneColumn(Area body, const View& view);
  void InTwoColumns(const Area& body, const View& view);

  std::vector<std::pair<Panel, Area>> panels_;
};

/// Takes rows off the end of a column of panels.
Area TakeBottom(Area& area, int rows) {
  area.rows -= rows;
  return {area.row + area.rows, area.column, rows, area.columns};
}

Area TakeTop(Area& area, int rows) {
  const Area top{area.row, area.column, rows, area.columns};
  area.row += rows;
  area.rows -= rows;
  return top;
}

Layout::Layout(const Canvas& canvas, const View& view) {
  // The title is above, the status and the keys are below.
  Area body{1, 0, canvas.Rows() - 3, canvas.Columns()};
  if (body.rows >= 11) Add(DrawCounters, TakeBottom(body, 1));
  if (view.sentences) {
    const bool beside = body.rows >= 11;  // or in place of everything
    Add(DrawSentences, TakeBottom(body, beside ? std::clamp(body.rows / 3, 6, 16) : body.rows));
    if (!beside) return;
  }
  canvas.Columns() < kFixColumns + 18 ? InOneColumn(body, view) : InTwoColumns(body, view);
}

void Layout::InOneColumn(Area body, const View& view) {
  Add(DrawFix, TakeTop(body, std::min(body.rows, FixRows(view))));
  if (view.survey && body.rows >= 3) return Add(DrawSurvey, body);
  if (body.rows >= 6) Add(DrawSignals, TakeTop(body, std::min(body.rows, 9)));
  if (body.rows >= 3) Add(DrawReports, body);
}

void Layout::InTwoColumns(const Area& body, const View& view) {
  const int middle = std::max(kFixColumns, std::min(body.columns / 2, 52));
  Area left{body.row, body.column, body.rows, middle};
  Area right{body.row, body.column + middle, body.rows, body.columns - middle};
  const bool tall = body.rows >= 30;
  Add(DrawFix, TakeTop(left, std::min(left.rows, FixRows(view))));
  if (left.rows >= 5) Add(DrawSignals, TakeTop(left, tall ? 12 : left.rows));
  if (left.rows >= 3) Add(DrawReports, left);
  if (view.survey) return Add(DrawSurvey, right);
  if (tall && right.columns >= 34) {
    Add(DrawSatellites, TakeBottom(right, kSatelliteSlots + 3));
  } else if (left.rows < 3 && right.rows >= 17) {
    Add(DrawReports, TakeBottom(right, 7));
  }
  Add(DrawSky, right);
}

void DrawTitle(Pane bar, const View& view) {
  bar.Fill(Style::title);
  const int column = bar.Text(0, 1, "gpsengine  " + Plain(view.model) + "  ", Style::title);
  bar.Text(0, column, Plain(view.source), Style::title);
}

void DrawKeys(Pane bar) {
  constexpr const char* kKeys[] = {"q quit",     "? help",   "c commands",
                                   "p position", "s survey", "r raw sentences"};
  bar.Fill(Style::title);
  int column = 1;
  for (const char* key : kKeys) {
    if (column + Width(key) <= bar.Columns()) column = bar.Text(0, column, key, Style::title) + 3;
  }
}

void DrawStatus(Pane bar, const View& view, bool shows_reports) {
  const auto& lines = view.readings.log;
  if (!view.status.empty()) {
    bar.Text(0, 1, Plain(view.status), view.status_style);
  } else if (!shows_reports && !lines.empty()) {
    bar.Text(0, 1, TimeText(lines.back().at) + ' ' + Plain(lines.back().text), lines.back().style);
  }
}

}  // namespace

Area Middle(const Canvas& canvas, int rows, int columns) {
  rows = std::min(rows, canvas.Rows());
  columns = std::min(columns, canvas.Columns());
  return {(canvas.Rows() - rows) / 2, (canvas.Columns() - columns) / 2, rows, columns};
}

void DrawDashboard(Canvas& canvas, const View& view) {
  if (canvas.Rows() < kLeastRows || canvas.Columns() < kLeastColumns) {
    Pane pane(canvas, canvas.Whole());
    pane.Text(0, 0, "terminal too small", Style::bad);
    pane.Text(1, 0, Print("%d x %d is the least", kLeastColumns, kLeastRows));
    return;
  }
  const Layout layout(canvas, view);
  for (const auto& [panel, area] : layout.Panels()) panel(Pane(canvas, area), view);
  const auto bar = [&](int row) { return Pane(canvas, {row, 0, 1, canvas.Columns()}); };
  DrawTitle(bar(0), view);
  DrawStatus(bar(canvas.Rows() - 2), view, layout.Has(DrawReports));
  DrawKeys(bar(canvas.Rows() - 1));
}

void DrawHelp(Canvas& canvas) {
  constexpr const char* kLines[][2] = {
      {"q", "quit"},
      {"c", "commands that this model offers"},
      {"p", "position: degrees, minutes, seconds"},
      {"s", "survey: how the fixes of a still receiver lie"},
      {"n", "begins the survey again"},
      {"r", "the sentences as they come in"},
      {"?", "this help"},
      {"Esc", "leaves this, the menu, a command"},
      {"Enter", "goes on where a recording pauses"},
      {"Ctrl-L", "draws the screen again"},
      {"", ""},
      {"●", "satellite that the fix uses"},
      {"○", "satellite in view besides"},
  };
  Pane frame(canvas, Middle(canvas, static_cast<int>(std::size(kLines)) + 2, 48));
  Pane inside = frame.Frame("Keys");
  for (int row = 0; row < static_cast<int>(std::size(kLines)); ++row) {
    inside.Text(row, 1, kLines[row][0], Style::value);
    inside.Text(row, 9, kLines[row][1]);
  }
}

}  // namespace host
