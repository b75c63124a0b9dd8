#include "host/exports/reportpage.h"

#include <cctype>
#include <sstream>

#include "host/exports/charts.h"
#include "host/exports/markup.h"
#include "host/exports/reportstyle.h"
#include "host/exports/reporttext.h"
#include "host/exports/surveysection.h"
#include "host/records/fixkind.h"

namespace host {

namespace {

/// "least / mean / greatest"
std::string Three(const Range& range, int decimals, double factor = 1.0) {
  return Number(range.least * factor, decimals) + " / " + Number(range.Mean() * factor, decimals) + " / " +
         Number(range.most * factor, decimals);
}

class Page {
 public:
  Page(const RunFacts& facts, const RunStatistics& run, const Tally& tally)
      : facts_(facts), units_(facts.display.System()), run_(run), tally_(tally) {}

  std::string Make() {
    out_ =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";
    AppendMarkup(out_, facts_.source);
    out_ += "</title>\n<style>";
    out_ += kReportStyle;
    out_ += "</style>\n</head>\n<body>\n<main>\n";
    AddHeader();
    if (run_.first_fix) AddTrack();
    if (run_.fixes > 1) AddSurveySection(out_, run_.survey, facts_.display, HeightName());
    if (run_.start) AddCourses();
    AddSatellites();
    AddTables();
    out_ += "<footer>gpsengine " GPSENGINE_VERSION "</footer>\n</main>\n</body>\n</html>\n";
    return std::move(out_);
  }

 private:
  void Tagged(const char* tag, std::string_view text) {
    ((out_ += '<') += tag) += '>';
    AppendMarkup(out_, text);
    ((out_ += "</") += tag) += ">\n";
  }

  void AddHeader() {
    out_ += "<header>\n";
    Tagged("h1", facts_.source);
    std::string line = "Receiver model " + facts_.model;
    if (run_.start) line += " \xC2\xB7 " + Time(*run_.start) + " to " + Time(*run_.end);
    if (!run_.first_fix) line += " \xC2\xB7 no fix was found";
    Tagged("p", line);
    if (run_.undated) Tagged("p", "The date is not known: times have the date of the day they were read on.");
    out_ += "</header>\n";
    if (run_.start) AddFigures();
  }

  void Figure(std::string_view name, const std::string& value) {
    out_ += "<div><dt>";
    out_ += name;
    out_ += "</dt><dd>";
    // The units stand back behind the numbers.
    std::istringstream words(value);
    for (std::string word; words >> word;) {
      const bool unit = std::isdigit(static_cast<unsigned char>(word.back())) == 0;
      out_ += unit ? "<small>" : "<b>";
      AppendMarkup(out_, word);
      out_ += unit ? "</small> " : "</b> ";
    }
    out_ += "</dd></div>\n";
  }

  void AddFigures() {
    out_ += "<dl class=\"figures\">\n";
    Figure("Duration", Span(Seconds()));
    Figure("Fixes", Whole(run_.fixes));
    if (run_.first_fix) Figure("Distance", Length(run_.distance, units_));
    if (run_.speed.All().count > 0) Figure("Greatest speed", In(units_.speed, run_.speed.All().most, 1));
    if (run_.height.All().count > 0) Figure("Mean height", In(units_.length, run_.height.All().Mean(), 1));
    Figure("Satellites used", Number(run_.used.All().Mean(), 1) + " mean");
    out_ += "</dl>\n";
  }

  std::string_view HeightName() const {
    return facts_.geoid == Geoid::add ? "Height above the ellipsoid" : "Height above mean sea level";
  }
  double Seconds() const { return static_cast<double>(*run_.end - *run_.start) / 1000.0; }
  long long Epochs() const {
    long long all = 0;
    for (const auto& entry : run_.epochs) all += entry.second;
    return all;
  }

  void AddLegend(bool track) {
    out_ += "<ul class=\"legend\">\n";
    for (const auto& [signal, count] : run_.epochs) {
      if (track && signal == UDF_SIGNAL_NONE) continue;
      ((out_ += "<li><i class=\"") += FixKindOf(signal).style) += "\"></i>";
      AppendMarkup(out_, FixKindOf(signal).name);
      out_ += "</li>\n";
    }
    if (track) {
      out_ += "<li><i class=\"dot\"></i>start</li>\n<li><i class=\"dot full\"></i>end</li>\n";
    }
    out_ += "</ul>\n";
  }

  void AddTrack() {
    out_ += "<section>\n<h2>Track</h2>\n";
    AddLegend(true);
    DrawTrack(out_, run_, units_);
    out_ += "<p class=\"note\">Start ";
    AppendMarkup(out_, PlaceOf(*run_.first_fix));
    if (run_.epochs.size() > 1) out_ += ". Where kinds of fix lie on each other, the rarer one is on top.";
    out_ += "</p>\n</section>\n";
  }

  void AddCourses() {
    out_ += "<section>\n<h2>Over time</h2>\n";
    AddLegend(false);
    DrawSignals(out_, run_);
    const Course courses[] = {
        {HeightName(), units_.length.name, "height", &run_.height, units_.length.per_metre, 0.01, false},
        {"Speed", units_.speed.name, "speed", &run_.speed, units_.speed.per_metre, 0.1, true},
        {"Satellites used", "", "used", &run_.used, 1.0, 1.0, true},
        {"Mean signal to noise of those", "dB-Hz", "strength", &run_.strength, 1.0, 1.0, false}};
    for (const auto& course : courses) DrawCourse(out_, course, run_);
    out_ += "<p class=\"note\">Times of day are UTC.</p>\n</section>\n";
  }

  void AddSatellites() {
    if (run_.satellites.empty()) return;
    out_ += "<section class=\"pair\">\n<div>\n<h2>Sky</h2>\n";
    DrawSky(out_, run_);
    out_ += "</div>\n<div>\n<h2>Signals</h2>\n";
    DrawStrengths(out_, run_);
    out_ += "</div>\n</section>\n";
  }

  void Row(std::string_view name, const std::string& value) {
    out_ += "<tr><th scope=\"row\">";
    AppendMarkup(out_, name);
    out_ += "</th><td>";
    AppendMarkup(out_, value);
    out_ += "</td></tr>\n";
  }

  void Row(std::string_view name, const Range& range, int decimals, double factor = 1.0) {
    if (range.count > 0) Row(name, Three(range, decimals, factor));
  }

  void AddTables() {
    out_ += "<section>\n<h2>The run</h2>\n<div class=\"tables\">\n<table>\n";
    AddTimes();
    out_ += "</table>\n<table>\n";
    AddQualities();
    out_ += "</table>\n</div>\n</section>\n";
  }

  void AddTimes() {
    Row("Source", facts_.source);
    Row("Receiver model", facts_.model);
    if (run_.start) {
      Row("First epoch", Time(*run_.start));
      Row("Last epoch", Time(*run_.end));
      Row("Duration", Span(Seconds()));
      Row("Epochs", Whole(Epochs()));
    }
    for (const auto& [signal, count] : run_.epochs) {
      Row("\xE2\x80\x83" + std::string(FixKindOf(signal).name),
          Whole(count) + " (" + Percent(count, Epochs()) + ")");
    }
    if (!run_.first_fix) return;
    Row("Track segments", Whole(run_.segments));
    Row("Longest time between fixes", Span(static_cast<double>(run_.longest_gap) / 1000.0));
    Row("Distance, in steps from 1 m up", Length(run_.distance, units_));
    Row("Time in motion", Span(run_.moving));
    AddPlace("Start", *run_.first_fix);
    AddPlace("End", *run_.last_fix);
  }

  std::string PlaceOf(const PositionEpoch& fix) const {
    return Place(fix.latitude, fix.longitude, facts_.display.Angles());
  }
  void AddPlace(std::string_view name, const PositionEpoch& fix) {
    Row(name, PlaceOf(fix));
    Projection* const projection = facts_.display.projection.get();
    if (projection == nullptr) return;
    const auto [easting, northing] = GridOf(fix.latitude, fix.longitude, *projection);
    Row("\xE2\x80\x83" + projection->Name(), easting + " E, " + northing + " N");
  }

  void AddQualities() {
    Row("", "least / mean / greatest");
    Row(std::string(HeightName()) + ", " + std::string(units_.length.name), run_.height.All(), 2,
        units_.length.per_metre);
    Row("Speed, " + std::string(units_.speed.name), run_.speed.All(), 1, units_.speed.per_metre);
    Row("Satellites used", run_.used.All(), 1);
    Row("Satellites in view", run_.in_view, 1);
    Row("Mean signal to noise, dB-Hz", run_.strength.All(), 1);
    Row("HDOP", run_.hdop, 2);
    Row("VDOP", run_.vdop, 2);
    Row("PDOP", run_.pdop, 2);
    const std::pair<std::string_view, long long> counts[] = {{"Messages", tally_.messages},
                                                             {"Sentences known", tally_.sentences},
                                                             {"Checksum errors", tally_.checksum_errors},
                                                             {"Binary messages", tally_.binary},
                                                             {"Bad binary messages", tally_.bad_binary},
                                                             {"Reads dropped", tally_.dropped}};
    for (const auto& [name, count] : counts) Row(name, Whole(count));
  }

  const RunFacts& facts_;
  const UnitSystem& units_;
  const RunStatistics& run_;
  const Tally& tally_;
  std::string out_;
};

}  // namespace

std::string ReportPage(const RunFacts& facts, const RunStatistics& run, const Tally& tally) {
  return Page(facts, run, tally).Make();
}

}  // namespace host
