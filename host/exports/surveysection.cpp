#include "host/exports/reportpage.h"

#include <functional>
#include <vector>

#include "host/exports/markup.h"
#include "host/exports/reporttext.h"
#include "host/records/fixkind.h"

namespace host {

namespace {

constexpr std::string_view kNote =
    "<p class=\"note\">Deviations are standard deviations about the mean. CEP50 and 95 % are the radii about "
    "the mean with half and 95 % of the fixes; 2DRMS is twice the root of the mean squared distance.";

/// A table with a row for each quantity and a column for all fixes and each kind of them.
class ResultTable {
 public:
  ResultTable(std::string& out, const Survey& survey, const Display& display)
      : out_(out), display_(display), unit_(display.System().length) {
    const auto kinds = survey.ByKind();
    if (kinds.size() > 1) Add("all", survey.Result());
    for (const auto& [signal, result] : kinds) Add(NameOfSignal(signal), result);
  }

  void Write(std::string_view height_name) {
    out_ += "<table class=\"results\">\n<thead><tr><th></th>";
    for (const auto& column : columns_) Cell("th", std::string(column.name));
    out_ += "</tr></thead>\n";
    Row("Fixes", [](const SurveyResult& of) { return Whole(of.fixes); });
    const AngleFormat format = display_.Angles();
    Row("Mean latitude", [&](const SurveyResult& of) { return Angle(of.latitude, format, 'N', 'S'); });
    Row("Mean longitude", [&](const SurveyResult& of) { return Angle(of.longitude, format, 'E', 'W'); });
    if (Projection* const projection = display_.projection.get()) {
      Row("Mean easting, " + projection->Name(),
          [&](const SurveyResult& of) { return GridOf(of.latitude, of.longitude, *projection).easting; });
      Row("Mean northing, " + projection->Name(),
          [&](const SurveyResult& of) { return GridOf(of.latitude, of.longitude, *projection).northing; });
    }
    Lengths("Mean " + Lower(height_name), &SurveyResult::height);
    Lengths("Deviation east", &SurveyResult::east);
    Lengths("Deviation north", &SurveyResult::north);
    Lengths("Deviation up", &SurveyResult::up);
    Row("CEP50", [&](const SurveyResult& of) { return In(unit_, of.cep50, 3); });
    Row("95 %", [&](const SurveyResult& of) { return In(unit_, of.r95, 3); });
    Lengths("2DRMS", &SurveyResult::drms2);
    out_ += "</table>\n";
  }
  std::size_t Columns() const { return columns_.size(); }

 private:
  struct Column {
    std::string_view name;
    SurveyResult result;
  };

  void Add(std::string_view name, const SurveyResult& result) { columns_.push_back({name, result}); }
  static std::string Lower(std::string_view text) {
    std::string lower(text);
    lower[0] = static_cast<char>(lower[0] - 'A' + 'a');
    return lower;
  }
  void Cell(const char* tag, const std::string& text) {
    ((out_ += '<') += tag) += '>';
    AppendMarkup(out_, text);
    ((out_ += "</") += tag) += '>';
  }
  void Row(const std::string& name, const std::function<std::string(const SurveyResult&)>& text) {
    out_ += "<tr>";
    Cell("th", name);
    for (const auto& column : columns_) Cell("td", text(column.result));
    out_ += "</tr>\n";
  }
  void Lengths(const std::string& name, std::optional<double> SurveyResult::*length) {
    Row(name, [&](const SurveyResult& of) {
      return of.*length ? In(unit_, *(of.*length), 3) : std::string("\xE2\x80\x93");
    });
  }

  std::string& out_;
  const Display& display_;
  const Unit& unit_;
  std::vector<Column> columns_;
};

}  // namespace

void AddSurveySection(std::string& out, const Survey& survey, const RunFacts& facts) {
  const SurveyResult all = survey.Result();
  if (HasMoved(all)) return;
  ResultTable table(out, survey, facts.display);
  const bool fits = table.Columns() <= 2;  // beside the drawing
  out += "<section>\n<h2>Static survey</h2>\n";
  out += fits ? "<div class=\"pair\">\n" : "<div>\n";
  out += "<div id=\"cloud\" class=\"narrow\" hidden>";
  out += "<svg role=\"img\" aria-label=\"the fixes about their mean\"></svg></div>\n";
  table.Write(HeightName(facts));
  out += "</div>\n";
  out += kNote;
  if (const auto kept = static_cast<long long>(survey.Points().size()); kept < all.fixes) {
    out += " The radii are those of " + Whole(kept) + " fixes, evenly spread over the run.";
  }
  out += "</p>\n</section>\n";
}

}  // namespace host
