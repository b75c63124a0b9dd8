#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "gpsengine/engine/gpsengine.h"
#include "host/exports/export.h"
#include "host/records/filter.h"
#include "host/session/outlet.h"

namespace host {

/// The files that are made beside what is shown, each a path or empty, and what the run holds back from
/// both.
struct ExportOptions {
  std::string gpx, kml, csv, nmea, pos, geojson, report;
  FilterOptions filter;

  bool IsAny() const;
};

/// A kind of such files.
struct ExportKind {
  const char* option;
  const char* description;
  std::string ExportOptions::*path;
  std::unique_ptr<Export> (*make)(const ExportPath&, const RunFacts&);
};
std::span<const ExportKind> ExportKinds();

/// Filters what is published on its way to another sink, and writes files of what passes.
class Exports : public Sink, public Outlet {
 public:
  /// `engine` and `inner` outlive the exports. `inputs` are the files that the run reads. Throws a
  /// Failure if a file cannot be written.
  Exports(const ExportOptions& options, const RunFacts& facts, const std::vector<std::string>& inputs,
          CGPSEngine& engine, Sink& inner);
  /// Completes the files of a run that has failed.
  ~Exports() override;

  bool OnData(const Record& record) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin(const Block& block) override;
  bool OnSentence(const Fields& sentence) override;
  bool OnString(const CString& text) override;
  bool WantsSky() const override { return !exports_.empty() || inner_.WantsSky(); }
  bool OnSky(const Sky& sky) override;
  void SetReference(std::optional<Moment> reference) override;

  /// With nothing to export or to hold back the other sink's own.
  Sink* Records() override {
    if (!exports_.empty() || filter_.Ends()) return this;
    if (!inner_.WantsRecords()) return nullptr;
    return filter_.IsNone() ? &inner_ : this;
  }
  bool WantsTexts() const override { return !exports_.empty(); }
  /// Writes what is new. Throws a Failure if a file cannot be written. A sink is called from inside the
  /// library, and so leaves that until it is asked.
  void Step() override;
  /// The stated time of the recording is over.
  bool IsDone() const override { return filter_.IsOver(); }
  /// Completes the files; throws as Step does. To be called before the engine's own end.
  bool Finish() override;

 private:
  void Tell(const std::optional<PositionTail>& tail);
  void CountSatellites(PositionEpoch& epoch) const;
  void Place(PositionEpoch& epoch);
  void ResolveHeights(PositionEpoch& epoch, bool has_sentence);
  void ComplainOfDates();

  CGPSEngine& engine_;
  Sink& inner_;
  Filter filter_;
  const Geoid geoid_;
  const std::shared_ptr<Projection> projection_;
  const std::string recording_;  // its name; empty for a receiver that sends now
  bool dated_ = false;
  bool undated_ = false, told_undated_ = false;  // some epoch was; the user knows
  std::optional<PositionEpoch> held_;            // until the sentence comes that gave it
  int segment_ = 0;                              // the last one
  std::optional<Sky> sky_;                       // the last one that has a list
  std::optional<double> separation_;             // the last one that was stated
  long long without_height_ = 0;                 // fixes
  std::vector<std::unique_ptr<Export>> exports_;
};

}  // namespace host
