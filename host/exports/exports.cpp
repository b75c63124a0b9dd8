#include "host/exports/exports.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/run/failure.h"

namespace host {

namespace {

constexpr ExportKind kKinds[] = {
    {"--gpx", "Write the track as GPX 1.1", &ExportOptions::gpx, MakeGpxExport},
    {"--kml", "Write the track as KML 2.2", &ExportOptions::kml, MakeKmlExport},
    {"--csv", "Write the fixes as a table", &ExportOptions::csv, MakeCsvExport},
    {"--nmea", "Write the fixes as NMEA 0183", &ExportOptions::nmea, MakeNmeaExport},
    {"--pos", "Write the fixes as RTKLIB's solutions", &ExportOptions::pos, MakePosExport},
    {"--geojson", "Write the fixes as points in GeoJSON", &ExportOptions::geojson, MakeGeoJsonExport},
    {"--report", "Write a page about the run, in HTML", &ExportOptions::report, MakeReportExport},
};

/// What files carry of where the bytes came from: a recording may be handed on without telling whose folder
/// it lay in.
std::string NameOf(const std::string& source) {
  if (source == "-") return "standard input";
  return source.starts_with("/dev/") ? source : source.substr(source.rfind('/') + 1);
}

}  // namespace

std::span<const ExportKind> ExportKinds() {
  return kKinds;
}

bool ExportOptions::IsAny() const {
  return std::any_of(std::begin(kKinds), std::end(kKinds),
                     [this](const ExportKind& kind) { return !(this->*kind.path).empty(); });
}

Exports::Exports(const ExportOptions& options, const RunFacts& facts, const std::vector<std::string>& inputs,
                 CGPSEngine& engine, Sink& inner)
    : engine_(engine),
      inner_(inner),
      filter_(options.filter),
      geoid_(facts.geoid),
      projection_(facts.display.projection),
      recording_(inputs.empty() ? "" : NameOf(facts.source)) {
  inner_.SetKinds(options.filter.only);
  RunFacts named = facts;
  named.source = NameOf(facts.source);
  for (const ExportKind& kind : kKinds) {
    const std::string& file = options.*kind.path;
    if (file.empty()) continue;
    for (const ExportKind& other : kKinds) {
      if (other.path == kind.path || options.*other.path != file) continue;
      throw Failure(ExitCode::usage,
                    std::string(kind.option) + " and " + other.option + " both name " + file);
    }
    exports_.push_back(kind.make({kind.option, file, inputs}, named));
    exports_.back()->Flush();
  }
}

Exports::~Exports() {
  while (!exports_.empty()) {
    try {
      Finish();
    } catch (const std::exception& error) {
      Complain(error.what());
    }
  }
}

void Exports::SetReference(std::optional<Moment> reference) {
  dated_ = dated_ || reference;
  inner_.SetReference(reference);
}

bool Exports::OnData(const Record& record) {
  Tell(std::nullopt);
  Record passed = record;
  filter_.Pass(passed);
  if (passed.kinds.IsEmpty()) return false;
  const bool is_new = passed.HasPosition() && passed.epoch.time && !passed.epoch.repeats;
  if (is_new && !exports_.empty()) held_ = passed.epoch;
  return inner_.OnData(passed);
}

bool Exports::OnSentence(const Fields& sentence) {
  return !filter_.IsOver() && inner_.OnSentence(sentence);
}

bool Exports::OnString(const CString& text) {
  if (held_) {
    std::string bytes;
    if (text.ToBytes(bytes)) Tell(PositionTailOf(bytes));
  }
  return !filter_.IsOver() && inner_.OnString(text);
}

bool Exports::OnSky(const Sky& sky) {
  if (sky.has_list && !exports_.empty()) sky_ = sky;
  if (!filter_.Passes(Kind::satellites)) return false;
  for (const auto& file : exports_) file->OnSky(sky);
  return inner_.WantsSky() && inner_.OnSky(sky);
}

/// A record tells of twelve satellites, of one system.
void Exports::CountSatellites(PositionEpoch& epoch) const {
  if (!sky_) return;
  epoch.in_view = sky_->in_view;
  epoch.strength = sky_->MeanSignal();
  epoch.used = sky_->UsedBy(epoch.used);
}

void Exports::Tell(const std::optional<PositionTail>& tail) {
  if (!held_) return;
  PositionEpoch& epoch = *held_;
  if (tail) {
    epoch.tail = *tail;
    separation_ = tail->separation;
  } else {
    epoch.tail.separation = separation_;  // the capture has missed the sentence
  }
  ResolveHeights(epoch, tail.has_value());
  CountSatellites(epoch);
  if (epoch.valid) Place(epoch);
  epoch.undated = !recording_.empty() && !dated_;
  undated_ = undated_ || epoch.undated;
  for (const auto& file : exports_) file->OnEpoch(epoch);
  held_.reset();
}

/// Here the first fix decides the zone of a reference system.
void Exports::Place(PositionEpoch& epoch) {
  epoch.starts_segment = epoch.starts_segment || segment_ == 0;
  segment_ += epoch.starts_segment ? 1 : 0;
  epoch.segment = segment_;
  if (!projection_) return;
  epoch.grid = projection_->Of(epoch.latitude, epoch.longitude);
  if (!epoch.grid) return;
  epoch.grid->easting *= projection_->Metres();
  epoch.grid->northing *= projection_->Metres();
}

/// The library has applied the separation that the sentence states, if it states one.
void Exports::ResolveHeights(PositionEpoch& epoch, bool has_sentence) {
  if (!epoch.valid || geoid_ == Geoid::none) return;
  if (const auto& separation = epoch.tail.separation) {
    if (geoid_ == Geoid::add) *epoch.height_msl -= *separation;
    return;
  }
  ++without_height_;
  epoch.height.reset();
  if (geoid_ == Geoid::subtract || !has_sentence) epoch.height_msl.reset();
}

bool Exports::OnRawData(const CGPSDataRaw& epoch) {
  return filter_.Passes(Kind::raw) && inner_.OnRawData(epoch);
}

bool Exports::OnEphemeris(const CGPSDataEphemeris& ephemeris) {
  return filter_.Passes(Kind::ephemeris) && inner_.OnEphemeris(ephemeris);
}

bool Exports::OnBin(const Block& block) {
  const bool passes = filter_.Passes(Kind::bin) || (block.epoch != nullptr && filter_.Passes(Kind::raw)) ||
                      (block.ephemeris != nullptr && filter_.Passes(Kind::ephemeris));
  return passes && inner_.OnBin(block);
}

void Exports::Step() {
  ComplainOfDates();
  for (const auto& file : exports_) file->Flush();
}

void Exports::ComplainOfDates() {
  if (!undated_ || std::exchange(told_undated_, true)) return;
  Complain("no date is known for " + recording_ +
           ": the exported times have the date of today. \"decode --date\" gives them another");
}

bool Exports::Finish() {
  Tell(std::nullopt);
  ComplainOfDates();
  const long long count = std::exchange(without_height_, 0);
  if (count > 0) {
    Complain("fixes without a geoid separation: " + std::to_string(count) +
             ". Heights that need it are left out of the exports");
  }
  while (!exports_.empty()) {
    const auto file = std::move(exports_.back());
    exports_.pop_back();
    file->Finish(TallyOf(engine_));
  }
  return true;
}

}  // namespace host
