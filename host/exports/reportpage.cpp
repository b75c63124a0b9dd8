#include "host/exports/reportpage.h"

#include <cctype>
#include <cmath>
#include <sstream>

#include "host/exports/charts.h"
#include "host/exports/markup.h"
#include "host/exports/reportstyle.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

constexpr double kKilometresAnHour = 3.6;  // in a metre a second

std::string Fixed(double value, int decimals) {
  std::string text;
  AppendFixed(text, value, decimals);
  if (text.starts_with('-')) text.replace(0, 1, "\xE2\x88\x92");
  return text;
}

/// The digits in groups of three.
std::string Whole(long long value) {
  std::string text = std::to_string(value);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, "\xE2\x80\xAF");
  return text;
}

std::string Length(double metres) {
  return metres < 10'000.0 ? Fixed(metres, metres < 100.0 ? 1 : 0) + " m" : Fixed(metres / 1000.0, 2) + " km";
}

std::string Speed(double metres_a_second) {
  return Fixed(metres_a_second * kKilometresAnHour, 1) + " km/h";
}

std::string Percent(long long part, long long whole) {
  return whole > 0 ? Fixed(100.0 * static_cast<double>(part) / static_cast<double>(whole), 1) + " %" : "";
}

std::string Span(double seconds) {
  const auto whole = static_cast<long long>(seconds);
  if (whole < 60) return Fixed(seconds, 1) + " s";
  if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
  const std::string hours =
      std::to_string(whole / 3600 % 24) + " h " + std::to_string(whole / 60 % 60) + " min";
  return whole < 86'400 ? hours : std::to_string(whole / 86'400) + " d " + hours;
}

std::string Time(Moment moment) {
  std::string iso;
  AppendIso(iso, moment);
  return iso.substr(0, 10) + ' ' + iso.substr(11, iso.substr(19, 4) == ".000" ? 8 : 10) + " UTC";
}

std::string Place(const PositionEpoch& fix) {
  const auto angle = [](double degrees, char positive, char negative) {
    return Fixed(std::fabs(degrees), 7) + "\xC2\xB0\xC2\xA0" + (degrees < 0.0 ? negative : positive);
  };
  return angle(fix.latitude, 'N', 'S') + ", " + angle(fix.longitude, 'E', 'W');
}

/// "least / mean / greatest"
std::string Three(const Range& range, int decimals, double factor = 1.0) {
  return Fixed(range.least * factor, decimals) + " / " + Fixed(range.Mean() * factor, decimals) + " / " +
         Fixed(range.most * factor, decimals);
}

class Page {
 public:
  Page(const RunFacts& facts, const RunStatistics& run, const Tally& tally)
      : facts_(facts), run_(run), tally_(tally) {}

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
    if (run_.first_fix) Figure("Distance", Length(run_.distance));
    if (run_.speed.All().count > 0) Figure("Greatest speed", Speed(run_.speed.All().most));
    if (run_.height.All().count > 0) Figure("Mean height", Fixed(run_.height.All().Mean(), 1) + " m");
    Figure("Satellites used", Fixed(run_.used.All().Mean(), 1) + " mean");
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
    DrawTrack(out_, run_);
    out_ += "<p class=\"note\">Start ";
    AppendMarkup(out_, Place(*run_.first_fix));
    if (run_.epochs.size() > 1) out_ += ". Where kinds of fix lie on each other, the rarer one is on top.";
    out_ += "</p>\n</section>\n";
  }

  void AddCourses() {
    out_ += "<section>\n<h2>Over time</h2>\n";
    AddLegend(false);
    DrawSignals(out_, run_);
    const Course courses[] = {
        {HeightName(), "m", "height", &run_.height, 1.0, 0.01, false},
        {"Speed", "km/h", "speed", &run_.speed, kKilometresAnHour, 0.1, true},
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
    Row("Distance, in steps from 1 m up", Length(run_.distance));
    Row("Time in motion", Span(run_.moving));
    Row("Start", Place(*run_.first_fix));
    Row("End", Place(*run_.last_fix));
  }

  void AddQualities() {
    Row("", "least / mean / greatest");
    Row(std::string(HeightName()) + ", m", run_.height.All(), 2);
    Row("Speed, km/h", run_.speed.All(), 1, kKilometresAnHour);
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
  const RunStatistics& run_;
  const Tally& tally_;
  std::string out_;
};

}  // namespace

std::string ReportPage(const RunFacts& facts, const RunStatistics& run, const Tally& tally) {
  return Page(facts, run, tally).Make();
}

}  // namespace host
