#include "host/cli/exportcommandline.h"

#include <CLI/CLI.hpp>
#include <charconv>

#include "host/cli/values.h"
#include "host/session/recordingfeed.h"

namespace host {

namespace {

const std::map<std::string, Kind> kKinds = {
    {"fix", Kind::fix}, {"satellites", Kind::satellites}, {"report", Kind::report},
    {"raw", Kind::raw}, {"ephemeris", Kind::ephemeris},   {"bin", Kind::bin}};

const std::map<std::string, Units> kUnits = {
    {"metric", Units::metric}, {"imperial", Units::imperial}, {"nautical", Units::nautical}};
const std::map<std::string, AngleFormat> kAngles = {
    {"degrees", AngleFormat::degrees}, {"minutes", AngleFormat::minutes}, {"dms", AngleFormat::seconds}};

void AddFile(CLI::App& command, const std::string& name, std::string& path, const std::string& what) {
  command.add_option(name, path, what)->check(AName())->type_name("FILE")->group("Exports");
}

/// An option that takes one of some words.
template <class Value, class Word>
void AddWord(CLI::App& command, const std::string& name, Value& value,
             const std::map<std::string, Word>& words, const std::string& what) {
  std::vector<std::string> names;
  for (const auto& word : words) names.push_back(word.first);
  command
      .add_option_function<std::string>(
          name, [&value, &words](const std::string& word) { value = words.at(word); }, what)
      ->check(CLI::IsMember(names))
      ->type_name("CHOICE")
      ->group("Units and reference systems");
}

void AddFilters(CLI::App& command, FilterOptions& filter) {
  std::vector<std::string> names;
  for (const auto& kind : kKinds) names.push_back(kind.first);
  command
      .add_option_function<std::vector<std::string>>(
          "--only",
          [&filter](const std::vector<std::string>& words) {
            filter.only = Kinds();
            for (const auto& word : words) filter.only.Add(kKinds.at(word));
          },
          "Kinds to show and export: fix, satellites, report, raw, ephemeris, bin")
      ->check(CLI::IsMember(names))
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("KIND,...")
      ->group("Filters");
  command.add_option("--min-distance", filter.min_distance, "Only fixes so many metres off the last one")
      ->check(AboveZero())
      ->type_name("M")
      ->group("Filters");
  command.add_option("--min-interval", filter.min_interval, "Only fixes so many seconds after the last one")
      ->check(AboveZero())
      ->type_name("S")
      ->group("Filters");
}

}  // namespace

void AddSpeedOption(CLI::App& command, double& speed) {
  command
      .add_option_function<std::string>(
          "--speed",
          [&speed](const std::string& word) {
            const char* const end = word.data() + word.size();
            if (word == "max" || word == "engine") {
              speed = word == "max" ? PacedFeed::kMax : 0.0;
            } else if (std::from_chars(word.data(), end, speed).ptr != end ||
                       !(speed > 0.0 && speed <= 1e6)) {
              throw CLI::ValidationError("--speed",
                                         word + " is no number above 0, and neither \"max\" nor \"engine\"");
            }
          },
          "Play so many times as fast as the recording's own times; max: as fast as it goes; "
          "engine: a line every half second, over and over")
      ->type_name("N|max|engine")
      ->needs("--play");
}

void AddDisplayOptions(CLI::App& command, Display& display) {
  AddWord(command, "--units", display.units, kUnits,
          "Of lengths and speeds for people: metric, imperial (ft, mi, mph), nautical (ft, nmi, kn)");
  AddWord(command, "--angles", display.angles, kAngles, "Latitudes and longitudes for people");
  command
      .add_option_function<std::string>(
          "--crs",
          [&display](const std::string& code) { display.projection = std::make_shared<Projection>(code); },
          "Eastings and northings too, in a system that PROJ knows, such as EPSG:25832; utm: the zone of the "
          "first fix")
      ->check(AName())
      ->type_name("CODE")
      ->group("Units and reference systems");
}

void AddExportOptions(CLI::App& command, ExportOptions& options) {
  AddFile(command, "--gpx", options.gpx, "Write the track as GPX 1.1");
  AddFile(command, "--kml", options.kml, "Write the track as KML 2.2");
  AddFile(command, "--csv", options.csv, "Write the fixes as a table");
  AddFile(command, "--nmea", options.nmea, "Write the fixes as NMEA 0183");
  AddFile(command, "--pos", options.pos, "Write the fixes as RTKLIB's solutions");
  AddFile(command, "--geojson", options.geojson, "Write the fixes as points in GeoJSON");
  AddFile(command, "--report", options.report, "Write a page about the run, in HTML");
  AddFilters(command, options.filter);
}

}  // namespace host
