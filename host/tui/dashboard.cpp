#include "host/tui/dashboard.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "host/tui/panels.h"

namespace host {

namespace {

constexpr int kLeastRows = 8, kLeastColumns = 36;
constexpr int kFixRows = 11, kFixColumns = 40;

/// Eastings and northings take two more.
int FixRows(const View& view) {
  return view.display.projection ? kFixRows + 2 : kFixRows;
}

struct Layout {
  std::optional<Area> fix, survey, sky, signals, satellites, reports, sentences, counters;
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

void LayOutOneColumn(Layout& layout, Area body, const View& view) {
  layout.fix = TakeTop(body, std::min(body.rows, FixRows(view)));
  if (view.survey && body.rows >= 3) {
    layout.survey = body;
    return;
  }
  if (body.rows >= 6) layout.signals = TakeTop(body, std::min(body.rows, 9));
  if (body.rows >= 3) layout.reports = body;
}

void LayOutTwoColumns(Layout& layout, const Area& body, const View& view) {
  const int middle = std::max(kFixColumns, std::min(body.columns / 2, 52));
  Area left{body.row, body.column, body.rows, middle};
  Area right{body.row, body.column + middle, body.rows, body.columns - middle};
  const bool tall = body.rows >= 30;
  layout.fix = TakeTop(left, std::min(left.rows, FixRows(view)));
  if (left.rows >= 5) layout.signals = TakeTop(left, tall ? 12 : left.rows);
  if (left.rows >= 3) layout.reports = left;
  if (view.survey) {
    layout.survey = right;
    return;
  }
  if (tall && right.columns >= 34) {
    layout.satellites = TakeBottom(right, kSatelliteSlots + 3);
  } else if (!layout.reports && right.rows >= 17) {
    layout.reports = TakeBottom(right, 7);
  }
  layout.sky = right;
}

Layout LayOut(const Canvas& canvas, const View& view) {
  Layout layout;
  // The title is above, the status and the keys are below.
  Area body{1, 0, canvas.Rows() - 3, canvas.Columns()};
  if (body.rows >= 11) layout.counters = TakeBottom(body, 1);
  if (view.sentences) {
    const bool beside = body.rows >= 11;  // or in the place of everything
    layout.sentences = TakeBottom(body, beside ? std::clamp(body.rows / 3, 6, 16) : body.rows);
    if (!beside) return layout;
  }
  canvas.Columns() < kFixColumns + 18 ? LayOutOneColumn(layout, body, view)
                                      : LayOutTwoColumns(layout, body, view);
  return layout;
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
  const auto& lines = view.readings.Lines();
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
  const Layout layout = LayOut(canvas, view);
  const auto draw = [&](const std::optional<Area>& area, void (*panel)(Pane, const View&)) {
    if (area) panel(Pane(canvas, *area), view);
  };
  draw(layout.fix, DrawFix);
  draw(layout.survey, DrawSurvey);
  draw(layout.sky, DrawSky);
  draw(layout.signals, DrawSignals);
  draw(layout.satellites, DrawSatellites);
  draw(layout.reports, DrawReports);
  draw(layout.sentences, DrawSentences);
  draw(layout.counters, DrawCounters);
  const auto bar = [&](int row) { return Pane(canvas, {row, 0, 1, canvas.Columns()}); };
  DrawTitle(bar(0), view);
  DrawStatus(bar(canvas.Rows() - 2), view, layout.reports.has_value());
  DrawKeys(bar(canvas.Rows() - 1));
}

void DrawHelp(Canvas& canvas) {
  constexpr const char* kLines[][2] = {
      {"q", "quit"},
      {"c", "commands that this model offers"},
      {"p", "position: degrees, minutes, seconds"},
      {"s", "survey: how the fixes of a still receiver lie"},
      {"n", "begins the survey anew"},
      {"r", "the sentences as they come in"},
      {"?", "this help"},
      {"Esc", "leaves this, the menu, a command"},
      {"Enter", "goes on where a recording pauses"},
      {"Ctrl-L", "draws the screen anew"},
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
