#include "host/tui/panels.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/records/fixkind.h"
#include "host/tui/dashboard.h"

namespace host {

namespace {

struct Kind {
  std::string_view words;
  Style style;
};

Kind KindOf(const Readings& readings) {
  const auto signal = readings.signal;
  if (!signal) return {"waiting", Style::warn};
  const std::string_view name = NameOfSignal(*signal);
  if (*signal == UDF_SIGNAL_NONE) return {name, Style::bad};
  return {name, FixKindOf(*signal).gpx.empty() ? Style::warn : Style::good};
}

std::string AgeText(double seconds) {
  const auto whole = static_cast<long long>(seconds);
  if (whole < 100) return Print("%lld s", whole);
  if (whole < 6000) return Print("%lld min", whole / 60);
  return Print("%lld h", whole / 3600);
}

std::string DopText(const std::optional<double>& dop) {
  return dop ? Print("%4.1f", *dop) : "   -";
}

/// A line of the fix panel: numbers end in one column, units begin in the next but one.
class FixLines {
 public:
  FixLines(Pane pane, Style value) : pane_(pane), value_(value) {}

  void Add(const char* label, const std::string& number, const std::string& unit = "",
           const std::string& number2 = "", const std::string& unit2 = "") {
    constexpr int kNumberEnd = 20, kSecondEnd = 29;
    Label(label);
    pane_.Text(row_, kNumberEnd - Width(number), number, value_);
    pane_.Text(row_, kNumberEnd + (unit.starts_with("°") ? 0 : 1), unit);
    pane_.Text(row_, kSecondEnd - Width(number2), number2, value_ == Style::dim ? value_ : Style::normal);
    pane_.Text(row_, kSecondEnd + 1, unit2);
    ++row_;
  }
  void AddAngle(const char* label, const std::string& angle) {
    constexpr int kAngleEnd = 31;
    Label(label);
    pane_.Text(row_++, kAngleEnd - Width(angle), angle, value_);
  }
  void AddDops(const Latest::Dilution& dops) {
    int column = Label("HDOP");
    column = pane_.Text(row_, column + 2, DopText(dops.hdop), value_);
    column = pane_.Text(row_, column + 3, "PDOP ", Style::label);
    column = pane_.Text(row_, column + 1, DopText(dops.pdop), value_);
    column = pane_.Text(row_, column + 3, "VDOP ", Style::label);
    pane_.Text(row_++, column + 1, DopText(dops.vdop), value_);
  }

 private:
  int Label(const char* label) { return pane_.Text(row_, 1, label, Style::label); }

  Pane pane_;
  const Style value_;
  int row_ = 1;
};

void DrawKind(Pane& pane, const Readings& readings) {
  const Kind kind = KindOf(readings);
  const bool stale = readings.IsStale();
  pane.Text(0, 1, kind.words, stale ? Style::dim : kind.style);
  if (const auto age = readings.Age(); age && readings.fix) {
    pane.Right(0, (stale ? " STALE " : "age ") + AgeText(*age) + ' ', stale ? Style::bad : Style::normal);
  }
}

void AddPlace(FixLines& lines, const View& view) {
  const auto& fix = view.readings.fix;
  const AngleFormat format = view.display.Angles();
  lines.AddAngle("Latitude", fix ? MarkedAngle(fix->latitude, format, 'N', 'S') : "-");
  lines.AddAngle("Longitude", fix ? MarkedAngle(fix->longitude, format, 'E', 'W') : "-");
  Projection* const projection = view.display.projection.get();
  if (projection == nullptr) return;
  std::optional<Projection::Place> place;
  if (fix) place = projection->Of(fix->latitude, fix->longitude);
  const std::string unit = ' ' + projection->UnitName();
  lines.AddAngle("Easting", place ? Print("%.3f", place->easting) + unit : "-");
  lines.AddAngle("Northing", place ? Print("%.3f", place->northing) + unit : "-");
}

/// The height as it is set up, and the other one where the separation between both is known.
void AddHeight(FixLines& lines, const View& view) {
  const auto& fix = view.readings.fix;
  const auto& separation = view.readings.separation;
  const Unit& unit = view.display.System().length;
  const std::string name(unit.name);
  if (!fix) return lines.Add("Height", "-", name);
  const std::string height = Print("%.2f", *fix->height * unit.per_metre);
  if (!separation) return lines.Add("Height", height, name);
  const bool adds = view.geoid == Geoid::add;
  const double other = (*fix->height + (adds ? -*separation : *separation)) * unit.per_metre;
  const int room = 7 - Width(name);  // after the first one
  int decimals = 2;
  while (decimals > 0 && Width(Print("%.*f", decimals, other)) > room) --decimals;
  lines.Add(adds ? "Height HAE" : "Height MSL", height, name, Print("%.*f", decimals, other),
            name + (adds ? " MSL" : " HAE"));
}

void AddTime(FixLines& lines, const View& view) {
  const auto time = view.readings.time_of_day;
  const auto moment = view.readings.time;
  std::string date;
  if (moment && (view.is_live || view.readings.dated)) date = "  " + IsoText(*moment).substr(0, 10);
  lines.Add("Time", time ? TimeText(static_cast<std::int64_t>(*time)) : "-", "UTC" + date);
}

/// How old corrections are, and how many have come; or why none do.
void DrawCorrections(FixLines& lines, const CorrectionStatus& status) {
  const std::string count = std::to_string(status.messages);
  if (!status.age) return lines.Add("Corrections", NameOf(status.state), "", count, "msgs");
  lines.Add("Corrections", Print("%.1f", std::min(*status.age, 99999.0)), "s old", count, "msgs");
}

/// Breaks a text at its blanks, and words that are too long anywhere.
std::vector<std::string> Wrap(std::string_view text, std::size_t width) {
  std::vector<std::string> rows;
  do {
    std::size_t end = std::min(width, text.size());
    if (end < text.size()) {
      const auto blank = text.rfind(' ', end);
      if (blank != std::string_view::npos && blank > 0) end = blank;
    }
    rows.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  } while (!text.empty());
  return rows;
}

}  // namespace

void DrawFix(Pane pane, const View& view) {
  const Readings& readings = view.readings;
  const Projection* const projection = view.display.projection.get();
  Pane inside = pane.Frame(projection != nullptr ? "Fix   " + Plain(projection->Name()) : "Fix");
  DrawKind(inside, readings);
  const bool holds = readings.fix && readings.signal != UDF_SIGNAL_NONE && !readings.IsStale();
  FixLines lines(inside, holds ? Style::value : Style::dim);
  AddPlace(lines, view);
  const auto speed = readings.speed;
  const auto& [first, second] = view.display.System().both_speeds;
  const auto in = [&](const Unit& unit) { return speed ? Print("%.1f", *speed * unit.per_metre) : "-"; };
  lines.Add("Speed", in(first), std::string(first.name), in(second), std::string(second.name));
  const auto course = readings.course;
  lines.Add("Course", course ? Print("%03.0f", std::fmod(std::round(*course), 360.0)) : "-", "° true");
  AddHeight(lines, view);
  AddTime(lines, view);
  lines.Add("Satellites", readings.signal ? Print("%d", readings.used) : "-", "used",
            Print("%d", std::max(readings.sky.in_view, readings.used)), "in view");
  lines.AddDops(readings.dops);
  if (view.corrections) DrawCorrections(lines, *view.corrections);
}

void DrawReports(Pane pane, const View& view) {
  Pane inside = pane.Frame("Reports");
  const auto& lines = view.readings.log;
  constexpr int kIndent = 10;
  const auto width = static_cast<std::size_t>(std::max(inside.Columns() - kIndent - 1, 1));
  if (lines.empty()) inside.Text(0, 1, "none so far", Style::dim);
  // As many of the newest as there is room for, each over as many rows as it needs.
  std::vector<std::pair<const Latest::LogLine*, std::vector<std::string>>> shown;
  int used = 0;
  for (auto line = lines.rbegin(); line != lines.rend() && used < inside.Rows(); ++line) {
    shown.emplace_back(&*line, Wrap(Plain(line->text), width));
    used += static_cast<int>(shown.back().second.size());
  }
  int row = std::min(inside.Rows() - used, 0);
  for (auto line = shown.rbegin(); line != shown.rend(); ++line) {
    inside.Text(row, 1, TimeText(line->first->at), Style::label);
    for (const std::string& text : line->second) inside.Text(row++, kIndent, text, line->first->style);
  }
}

void DrawSentences(Pane pane, const View& view) {
  Pane inside = pane.Frame("Sentences");
  const auto& sentences = view.readings.sentences;
  int row = inside.Rows() - 1;
  for (auto sentence = sentences.rbegin(); sentence != sentences.rend() && row >= 0; ++sentence, --row) {
    inside.Text(row, 1, *sentence);
  }
}

void DrawCounters(Pane pane, const View& view) {
  const Tally& line = view.counters;
  const Readings& readings = view.readings;
  const struct {
    const char* label;
    const char* short_label;
    long long count;
  } counts[] = {
      {"sentences", "sentences", line.sentences},
      {"bad checksum", "bad", line.checksum_errors},
      {"binary", "binary", line.binary},
      {"bad binary", "bad", line.bad_binary},
      {"raw epochs", "epochs", readings.raw_epochs},
      {"ephemerides", "eph", readings.ephemerides},
      {"BIN messages", "BIN", readings.bins},
  };
  const bool is_wide = pane.Columns() >= 110;
  int column = 1;
  for (const auto& [label, short_label, count] : counts) {
    const std::string number = Print(" %lld", count);
    const std::string_view name = is_wide ? label : short_label;
    if (column + Width(name) + Width(number) > pane.Columns()) return;
    column = pane.Text(0, column, name, Style::label);
    column = pane.Text(0, column, number) + 2;
  }
}

}  // namespace host
