#include "host/exports/reportpage.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "host/exports/reporttext.h"
#include "host/records/fixkind.h"

namespace host {

namespace {

using Json = nlohmann::json;

// Of the fixes about their mean. More a drawing does not show.
constexpr std::size_t kMostDots = 3000;

double Rounded(double value, int decimals) {
  const double power = std::pow(10.0, decimals);
  return std::round(value * power) / power;
}

/// Enough decimals that what they leave out is a small part of a length.
int DecimalsFor(double length) {
  return std::clamp(static_cast<int>(std::ceil(-std::log10(length))) + 1, 0, 6);
}

/// The kinds of fix of a run, the most frequent first: the drawing has the rarer ones on top.
class KindsOfRun {
 public:
  explicit KindsOfRun(const RunStatistics& run) {
    for (const auto& entry : run.epochs) signals_.push_back(entry.first);
    std::stable_sort(signals_.begin(), signals_.end(),
                     [&](int a, int b) { return run.epochs.at(a) > run.epochs.at(b); });
  }
  long Index(int signal) const {
    return std::find(signals_.begin(), signals_.end(), signal) - signals_.begin();
  }
  Json Names() const {
    Json names = Json::array();
    for (const int signal : signals_)
      names.push_back({{"style", FixKindOf(signal).style}, {"name", NameOfSignal(signal)}});
    return names;
  }

 private:
  std::vector<int> signals_;
};

/// A point is where it is, its kind where that changes, and 1 if no line leads there from the point before.
Json TrackOf(const Sketch& track, const KindsOfRun& kinds) {
  const int decimals = DecimalsFor(track.Cell());
  Json points = Json::array();
  int before = -1;
  for (const auto& point : track.Points()) {
    Json entry = {Rounded(point.east, decimals), Rounded(point.north, decimals)};
    if (point.broken || point.signal != before) entry.push_back(kinds.Index(point.signal));
    if (point.broken) entry.push_back(1);
    before = point.signal;
    points.push_back(std::move(entry));
  }
  return points;
}

/// The places of each kind, one number after the other.
Json CloudOf(const Survey& survey, const SurveyResult& all, const KindsOfRun& kinds) {
  const int decimals = DecimalsFor(std::max(all.r95, 1e-3) / 1000.0);
  std::map<int, Json> places;
  const std::vector<Survey::Point> points = survey.Points();
  for (std::size_t i = 0; i < points.size(); i += points.size() / kMostDots + 1) {
    places[points[i].signal].push_back(Rounded(points[i].east, decimals));
    places[points[i].signal].push_back(Rounded(points[i].north, decimals));
  }
  Json dots = Json::array();
  for (auto& [signal, of_kind] : places) dots.push_back({kinds.Index(signal), std::move(of_kind)});
  return {{"cep50", all.cep50}, {"r95", all.r95}, {"kinds", dots}};
}

/// From when to when, and the kinds of fix there were with their parts of it.
Json SpansOf(const RunStatistics& run, const KindsOfRun& kinds) {
  Json spans = Json::array();
  for (const SignalSpan& span : run.signals) {
    Json parts = Json::array();
    for (const auto& [signal, time] : span.mixed) parts.push_back({kinds.Index(signal), time.count()});
    if (parts.empty()) parts.push_back({kinds.Index(span.signal), 1});
    spans.push_back({(span.start - *run.start).count(), (span.end - *run.start).count(), std::move(parts)});
  }
  return spans;
}

/// The time of each piece, its mean, and its least and greatest values if it has several.
Json StretchesOf(const Envelope& values, Moment start, double factor) {
  Json stretches = Json::array();
  for (const auto& piece : values.Pieces()) {
    if (stretches.empty() || piece.broken) stretches.push_back(Json::array());
    Json entry = {((piece.start - start) + (piece.end - piece.start) / 2).count(),
                  Rounded(piece.values.Mean() * factor, 3)};
    if (piece.values.count > 1) {
      entry.push_back(Rounded(piece.values.least * factor, 3));
      entry.push_back(Rounded(piece.values.most * factor, 3));
    }
    stretches.back().push_back(std::move(entry));
  }
  return stretches;
}

Json CoursesOf(const RunFacts& facts, const RunStatistics& run) {
  const auto& [length, distance, far, speed, both] = facts.display.System();
  const struct {
    std::string title;
    const char* style;
    const Envelope& values;
    double factor;      // from the value to the unit
    double least_step;  // of the labels
    bool is_from_zero;
  } courses[] = {{std::string(HeightName(facts)) + ", " + std::string(length.name), "height", run.height,
                  length.per_metre, 0.01, false},
                 {"Speed, " + std::string(speed.name), "speed", run.speed, speed.per_metre, 0.1, true},
                 {"Satellites used", "used", run.used, 1.0, 1.0, true},
                 {"Mean signal to noise of those, dB-Hz", "strength", run.strength, 1.0, 1.0, false}};
  Json all = Json::array();
  for (const auto& [title, style, values, factor, step, is_from_zero] : courses) {
    if (values.All().count == 0) continue;
    all.push_back({{"title", title},
                   {"style", style},
                   {"step", step},
                   {"isFromZero", is_from_zero},
                   {"stretches", StretchesOf(values, *run.start, factor)}});
  }
  return all;
}

Json SatellitesOf(const RunStatistics& run) {
  Json satellites = Json::array();
  for (const auto& [id, trail] : run.satellites) {
    const double share = static_cast<double>(trail.used) / static_cast<double>(trail.seen);
    Json places = Json::array();
    for (const auto& place : trail.places) places.push_back({place.elevation, place.azimuth});
    Json entry = {
        {"name", id.Name()}, {"gnssid", id.system}, {"share", Rounded(share, 3)}, {"trail", places}};
    if (!places.empty()) entry["at"] = {trail.last.elevation, trail.last.azimuth};
    if (const Range& strength = trail.strength; strength.count > 0)
      entry["signal"] = {strength.least, Rounded(strength.Mean(), 1), strength.most};
    satellites.push_back(std::move(entry));
  }
  return satellites;
}

}  // namespace

std::string_view HeightName(const RunFacts& facts) {
  return facts.geoid == Geoid::add ? "Height above the ellipsoid" : "Height above mean sea level";
}

std::string ReportData(const RunFacts& facts, const RunStatistics& run) {
  const KindsOfRun kinds(run);
  const auto unit = [](const Unit& of) { return Json{{"name", of.name}, {"perMetre", of.per_metre}}; };
  const UnitSystem& units = facts.display.System();
  Json data = {{"start", run.start.value_or(Moment()).time_since_epoch().count()},
               {"units", {{"length", unit(units.length)}, {"distance", unit(units.distance)}}},
               {"kinds", kinds.Names()},
               {"track", TrackOf(run.track, kinds)},
               {"spans", SpansOf(run, kinds)},
               {"courses", CoursesOf(facts, run)},
               {"satellites", SatellitesOf(run)}};
  if (const auto& first = run.first_fix) {
    data["end"] = {{"east", run.track.Last()->east}, {"north", run.track.Last()->north}};
    data["place"] = Place(first->latitude, first->longitude, facts.display.Angles());
    const SurveyResult all = run.survey.Result();
    if (run.fixes > 1 && !HasMoved(all)) data["cloud"] = CloudOf(run.survey, all, kinds);
  }
  return data.dump();
}

}  // namespace host
