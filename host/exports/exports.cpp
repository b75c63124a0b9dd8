#include "host/exports/exports.h"

#include <utility>

#include "host/run/failure.h"

namespace host {

namespace {

using Make = std::unique_ptr<Export> (*)(const ExportPath&, const RunFacts&);

constexpr struct {
  const char* option;
  std::string ExportOptions::*path;
  Make make;
} kExports[] = {
    {"--gpx", &ExportOptions::gpx, MakeGpxExport},
    {"--kml", &ExportOptions::kml, MakeKmlExport},
    {"--csv", &ExportOptions::csv, MakeCsvExport},
    {"--nmea", &ExportOptions::nmea, MakeNmeaExport},
    {"--pos", &ExportOptions::pos, MakePosExport},
    {"--geojson", &ExportOptions::geojson, MakeGeoJsonExport},
    {"--report", &ExportOptions::report, MakeReportExport},
};

/// What files carry of where the bytes came from: a recording may be handed on without telling whose folder
/// it lay in.
std::string NameOf(const std::string& source) {
  if (source == "-") return "standard input";
  return source.starts_with("/dev/") ? source : source.substr(source.rfind('/') + 1);
}

}  // namespace

Exports::Exports(const ExportOptions& options, const RunFacts& facts, const std::vector<std::string>& inputs,
                 CGPSEngine& engine, Sink& inner)
    : engine_(engine),
      inner_(inner),
      filter_(options.filter),
      geoid_(facts.geoid),
      projection_(facts.display.projection),
      recording_(inputs.empty() ? "" : NameOf(facts.source)) {
  RunFacts named = facts;
  named.source = NameOf(facts.source);
  for (const auto& [option, path, make] : kExports) {
    const std::string& file = options.*path;
    if (file.empty()) continue;
    for (const auto& other : kExports) {
      if (other.path != path && options.*other.path == file) {
        throw Failure(ExitCode::usage, std::string(option) + " and " + other.option + " both name " + file);
      }
    }
    exports_.push_back(make({option, file, inputs}, named));
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
  reader_.SetReference(reference);
  inner_.SetReference(reference);
}

bool Exports::OnData(const CGPSData& data) {
  Tell(std::nullopt);
  std::optional<PositionEpoch> epoch;
  const bool is_told = !exports_.empty() || projection_ != nullptr;
  const bool reads = is_told || filter_.WantsEpochs();
  if (reads && data.m_bPositionValid) epoch = reader_.Read(data);
  const Kinds kinds = filter_.Pass(data, epoch ? &*epoch : nullptr);
  if (kinds.IsEmpty()) return false;
  if (is_told && kinds.Has(Kind::fix) && epoch->time && !epoch->repeats) held_ = {*epoch, data};
  inner_.SetKinds(kinds);
  return inner_.OnData(data);
}

bool Exports::OnSentence(const Fields& sentence) {
  inner_.SetKinds(filter_.Passing());
  return inner_.OnSentence(sentence);
}

bool Exports::OnString(const CString& text) {
  std::string bytes;
  if (held_ && text.ToBytes(bytes)) Tell(PositionTailOf(bytes));
  inner_.SetKinds(filter_.Passing());
  return inner_.OnString(text);
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
  PositionEpoch& epoch = held_->epoch;
  if (tail) {
    epoch.tail = *tail;
    separation_ = tail->separation;
  } else {
    epoch.tail.separation = separation_;  // the capture has missed the sentence
  }
  ResolveHeights(epoch, tail.has_value());
  CountSatellites(epoch);
  // The first fix decides the zone, whoever asks for places first.
  if (projection_ && epoch.fix) std::exchange(projection_, nullptr)->Of(epoch.latitude, epoch.longitude);
  epoch.undated = !recording_.empty() && !dated_;
  undated_ = undated_ || (epoch.undated && !exports_.empty());
  for (const auto& file : exports_) file->OnEpoch(epoch, held_->data);
  held_.reset();
}

/// The library has applied the separation that the sentence states, if it states one.
void Exports::ResolveHeights(PositionEpoch& epoch, bool has_sentence) {
  if (!epoch.fix || geoid_ == Geoid::none) return;
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

bool Exports::OnBin() {
  return filter_.Passes(Kind::bin) && inner_.OnBin();
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
  if (count > 0 && !exports_.empty()) {
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
