#include "host/cli/options.h"

#include <chrono>

namespace host {

namespace {

const std::map<std::string, Geoid> kGeoids = {
    {"none", Geoid::none}, {"add", Geoid::add}, {"subtract", Geoid::subtract}};
const std::map<std::string, Kind> kKinds = {
    {"fix", Kind::fix}, {"satellites", Kind::satellites}, {"report", Kind::report},
    {"raw", Kind::raw}, {"ephemeris", Kind::ephemeris},   {"bin", Kind::bin}};
const std::map<std::string, Units> kUnits = {
    {"metric", Units::metric}, {"imperial", Units::imperial}, {"nautical", Units::nautical}};
const std::map<std::string, AngleFormat> kAngles = {
    {"degrees", AngleFormat::degrees}, {"minutes", AngleFormat::minutes}, {"dms", AngleFormat::seconds}};

constexpr char kRinexGroup[] = "RINEX";
const std::map<std::string, RinexVersion> kRinexVersions = {{"2.11", RinexVersion::v2_11},
                                                            {"3.04", RinexVersion::v3_04}};

/// What the header tells of the mark, with the columns that RINEX has for it.
constexpr struct {
  const char* option;
  const char* type;
  std::string RinexStation::*text;
  std::size_t columns;
  const char* description;
} kStation[] = {
    {"--marker", "NAME", &RinexStation::marker, 60, "The mark; without it, the file's name"},
    {"--marker-number", "NUMBER", &RinexStation::marker_number, 20, "The mark's number"},
    {"--observer", "NAME", &RinexStation::observer, 20, "Who observes"},
    {"--agency", "NAME", &RinexStation::agency, 40, "For whom"},
    {"--receiver", "TYPE", &RinexStation::receiver, 20, "The receiver's type; without it, the model"},
    {"--receiver-number", "NUMBER", &RinexStation::receiver_number, 20, "Its serial number"},
    {"--receiver-version", "VERSION", &RinexStation::receiver_version, 20, "Its firmware"},
    {"--antenna", "TYPE", &RinexStation::antenna, 20, "The antenna's type, as the IGS names it"},
    {"--antenna-number", "NUMBER", &RinexStation::antenna_number, 20, "Its serial number"},
};

void AddRinex(CLI::App& command, RinexOptions& rinex) {
  auto* base = AddValue(command, "--rinex", rinex.base, "BASE", AName(),
                        "Log raw data to BASE.obs and BASE.nav, for post-processing")
                   ->group(kRinexGroup);
  AddChoice(command, "--rinex-version", rinex.version, kRinexVersions, "Of the format; 3.04 without it")
      ->needs(base)
      ->group(kRinexGroup);
  AddValue(command, "--interval", rinex.interval, "S", Between(0.1, 86400.0),
           "Seconds between the epochs that are logged")
      ->needs(base)
      ->group(kRinexGroup);
  for (const auto& [option, type, text, columns, description] : kStation) {
    AddValue(command, option, rinex.station.*text, type, AsciiUpTo(columns), description)
        ->needs(base)
        ->group(kRinexGroup);
  }
}

void AddLiveRawData(CLI::App& command, LiveOptions& live) {
  command.add_flag("--explain", live.explain, "Show what --rinex sends to the receiver, and send nothing")
      ->needs("--rinex")
      ->group(kRinexGroup);
  command.add_flag_function(
      "--attach-raw,!--no-attach-raw", [&live](std::int64_t sign) { live.attach_raw = sign > 0; },
      "Decode raw data; on where the model has them, and in a recording");
}

void AddExports(CLI::App& command, ExportOptions& exports) {
  for (const ExportKind& kind : ExportKinds()) {
    AddValue(command, kind.option, exports.*kind.path, "FILE", AName(), kind.description)->group("Exports");
  }
}

void AddFilters(CLI::App& command, FilterOptions& filter) {
  command
      .add_option_function<std::vector<std::string>>(
          "--only",
          [&filter](const std::vector<std::string>& words) {
            filter.only = Kinds();
            for (const auto& word : words) filter.only.Add(kKinds.at(word));
          },
          "Kinds to show and export: fix, satellites, report, raw, ephemeris, bin")
      ->check(CLI::IsMember(kKinds))
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("KIND,...")
      ->group("Filters");
  AddValue(command, "--min-distance", filter.min_distance, "M", Between(kAboveZero),
           "Only fixes at least so far from the last one")
      ->group("Filters");
  AddValue(command, "--min-interval", filter.min_interval, "S", Between(kAboveZero),
           "Only fixes at least so long after the last one")
      ->group("Filters");
}

void AddDisplay(CLI::App& command, Display& display) {
  constexpr char kGroup[] = "Units and reference systems";
  AddChoice(command, "--units", display.units, kUnits,
            "Of lengths and speeds for people: metric, imperial (ft, mi, mph), nautical (ft, nmi, kn)")
      ->group(kGroup);
  AddChoice(command, "--angles", display.angles, kAngles, "Latitudes and longitudes for people")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--crs",
          [&display](const std::string& code) { display.projection = std::make_shared<Projection>(code); },
          "Eastings and northings too, in a system that PROJ knows, such as EPSG:25832; utm: the zone of the "
          "first fix")
      ->check(AName())
      ->type_name("CODE")
      ->group(kGroup);
}

}  // namespace

void AddModel(CLI::App& command, std::string& model) {
  command.add_option("--model", model, "Receiver model, as \"gpsengine models\" lists them")
      ->transform(AModel())
      ->capture_default_str();
}

void AddDuration(CLI::App& command, double& seconds, const std::string& description) {
  AddValue(command, "--duration", seconds, "S", Between(kAboveZero), description);
}

void AddLine(CLI::App& command, LineChoice& line, const std::string& description) {
  auto* port = AddValue(
      command, "--port", line.port, "DEVICE|ADDRESS", AName(),
      description +
          "; tcp://HOST:PORT, rfc2217://HOST:PORT (ser2net, which sets the speed), udp://[HOST]:PORT, "
          "gpsd://HOST[:PORT], - (standard input); auto: look for a receiver; last: the port and model of "
          "the last run");
  command
      .add_option_function<std::string>(
          "--baud", [&line](const std::string& baud) { line.baud = BaudOf(baud); },
          "Baud rate, which is kept for the model once something is understood; auto: try the common ones")
      ->type_name("N")
      ->needs(port);
}

void AddReceiver(CLI::App& command, RunOptions& run) {
  AddModel(command, run.model);
  AddValue(command, "--antenna-height", run.antenna_height, "M", Between(-kAnyMore),
           "Metres to take off every height");
  AddChoice(command, "--geoid", run.geoid, kGeoids, "What to do with the geoid separation");
}

void AddLive(CLI::App& command, LiveOptions& live) {
  AddLine(command, live, "Serial device; without one, a simulated receiver");
  AddValue(command, "--play", live.play, "FILE", AName(), "Play a recording instead, once and in real time")
      ->excludes("--port");
  command
      .add_flag_callback(
          "--reconnect", [&live] { live.reconnect = std::chrono::seconds(1); },
          "Wait for a port that is lost, or is not there yet, instead of ending")
      ->needs("--port");
  command
      .add_option_function<std::string>(
          "--speed", [&live](const std::string& word) { live.speed = SpeedOf(word); },
          "Play this many times as fast as the recording's own times; max: as fast as it goes; "
          "engine: a line every half second, over and over")
      ->type_name("N|max|engine")
      ->needs("--play");
  AddReceiver(command, live);
  AddValue(command, "--record", live.record, "FILE", AName(), "Record the port's bytes")->excludes("--play");
  AddBeside(command, live);
  AddLiveRawData(command, live);
  AddCorrections(command, live.corrections);
  AddDuration(command, live.duration, "End after this many seconds");
}

void AddBeside(CLI::App& command, ShownOptions& shown) {
  AddRinex(command, shown.rinex);
  AddExports(command, shown.exports);
  AddFilters(command, shown.exports.filter);
  AddDisplay(command, shown.display);
}

void AddFormat(CLI::App& command, RunOptions& run, ShownOptions& shown,
               const std::map<std::string, Format>& formats, const std::string& description) {
  AddChoice(command, "--format", shown.format, formats, description);
  AddValue(command, "--count", run.count, "N", WholeBetween(1), "End after this many records were shown");
}

void AddListFormat(CLI::App& command, std::string& format, const std::string& plain) {
  format = plain;
  AddValue(command, "--format", format, "FORMAT", CLI::IsMember({plain, std::string("json")}),
           plain + " or json")
      ->capture_default_str();
}

}  // namespace host
