#include "host/exports/reportpage.h"

#include <cctype>
#include <sstream>

#include "host/exports/markup.h"
#include "host/exports/reporttext.h"
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
    constexpr std::pair<std::string_view, void (Page::*)()> kPlaces[] = {
        {"source", &Page::AddSource}, {"head", &Page::AddHead},     {"figures", &Page::AddFigures},
        {"survey", &Page::AddSurvey}, {"tables", &Page::AddTables}, {"version", &Page::AddVersion},
        {"run", &Page::AddRun}};
    std::string_view rest = ReportTemplate();
    for (const auto& [name, add] : kPlaces) {
      const std::string mark = "<!--" + std::string(name) + "-->";
      const auto at = rest.find(mark);
      out_ += rest.substr(0, at);
      rest.remove_prefix(at + mark.size());
      (this->*add)();
    }
    return std::move(out_ += rest);
  }

 private:
  void Tagged(const char* tag, std::string_view text) {
    ((out_ += '<') += tag) += '>';
    AppendMarkup(out_, text);
    ((out_ += "</") += tag) += ">\n";
  }

  void AddSource() { AppendMarkup(out_, facts_.source); }
  void AddSurvey() {
    if (run_.fixes > 1) AddSurveySection(out_, run_.survey, facts_);
  }
  void AddVersion() { out_ += GPSENGINE_VERSION; }
  void AddRun() { out_ += ReportData(facts_, run_); }

  void AddHead() {
    Tagged("h1", facts_.source);
    std::string line = "Receiver model " + facts_.model;
    if (run_.start) line += " \xC2\xB7 " + Time(*run_.start) + " to " + Time(*run_.end);
    if (!run_.first_fix) line += " \xC2\xB7 no fix was found";
    Tagged("p", line);
    if (run_.undated) Tagged("p", "The date is not known: times have the date of the day they were read on.");
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
    if (!run_.start) return;
    out_ += "<dl class=\"figures\">\n";
    Figure("Duration", Span(Seconds()));
    Figure("Fixes", Whole(run_.fixes));
    if (run_.first_fix) Figure("Distance", Length(run_.distance, units_));
    if (run_.speed.All().count > 0) Figure("Greatest speed", In(units_.speed, run_.speed.All().most, 1));
    if (run_.height.All().count > 0) Figure("Mean height", In(units_.length, run_.height.All().Mean(), 1));
    Figure("Satellites used", Number(run_.used.All().Mean(), 1) + " mean");
    out_ += "</dl>\n";
  }

  double Seconds() const { return gps::Seconds(*run_.end - *run_.start); }
  long long Epochs() const {
    long long all = 0;
    for (const auto& entry : run_.epochs) all += entry.second;
    return all;
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
    out_ += "<table>\n";
    AddTimes();
    out_ += "</table>\n<table>\n";
    AddQualities();
    out_ += "</table>\n";
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
      Row("\xE2\x80\x83" + std::string(NameOfSignal(signal)),
          Whole(count) + " (" + Percent(count, Epochs()) + ")");
    }
    if (!run_.first_fix) return;
    Row("Track segments", Whole(run_.segments));
    Row("Longest time between fixes", Span(gps::Seconds(run_.longest_gap)));
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
    Row(std::string(HeightName(facts_)) + ", " + std::string(units_.length.name), run_.height.All(), 2,
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
