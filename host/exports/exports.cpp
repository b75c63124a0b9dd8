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
    {"--gpx", &ExportOptions::gpx, MakeGpxExport},          {"--kml", &ExportOptions::kml, MakeKmlExport},
    {"--csv", &ExportOptions::csv, MakeCsvExport},          {"--nmea", &ExportOptions::nmea, MakeNmeaExport},
    {"--report", &ExportOptions::report, MakeReportExport},
};

}  // namespace

Exports::Exports(const ExportOptions& options, const RunFacts& facts, const std::string& input,
                 CGPSEngine& engine, Sink& inner)
    : engine_(engine), inner_(inner), filter_(options.filter) {
  for (const auto& [option, path, make] : kExports) {
    const std::string& file = options.*path;
    if (file.empty()) continue;
    for (const auto& other : kExports) {
      if (other.path != path && options.*other.path == file) {
        throw Failure(ExitCode::usage, std::string(option) + " and " + other.option + " both name " + file);
      }
    }
    exports_.push_back(make({option, file, input}, facts));
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
  reader_.SetReference(reference);
  inner_.SetReference(reference);
}

bool Exports::OnData(const CGPSData& data) {
  std::optional<PositionEpoch> epoch;
  if (data.m_bPositionValid) epoch = reader_.Read(data);
  const Kinds kinds = filter_.Pass(data, epoch ? &*epoch : nullptr);
  if (kinds.IsEmpty()) return false;
  for (const auto& file : exports_) {
    if (kinds.Has(Kind::satellites)) file->OnSatellites(data);
    if (kinds.Has(Kind::fix) && epoch->time && !epoch->repeats) file->OnEpoch(*epoch, data);
  }
  inner_.SetKinds(kinds);
  return inner_.OnData(data);
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
  for (const auto& file : exports_) file->Flush();
}

bool Exports::Finish() {
  while (!exports_.empty()) {
    const auto file = std::move(exports_.back());
    exports_.pop_back();
    file->Finish(TallyOf());
  }
  return true;
}

Tally Exports::TallyOf() const {
  Tally tally;
  tally.messages = engine_.GetMessages();
  tally.dropped = engine_.GetDroppedBuffers();
  if (const CGPSReceiver* receiver = engine_.GetReceiver()) {
    tally.sentences = receiver->GetSentencesRecognised();
    tally.checksum_errors = receiver->GetChecksumErrors();
    tally.binary = receiver->GetBinaryMessages();
    tally.bad_binary = receiver->GetBadBinaryMessages();
  }
  return tally;
}

}  // namespace host
