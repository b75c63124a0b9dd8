#pragma once

#include <memory>
#include <optional>
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

  bool IsAny() const { return !(gpx + kml + csv + nmea + pos + geojson + report).empty(); }
};

/// Filters what is published on its way to another sink, and writes files of what passes.
class Exports : public Sink, public Outlet {
 public:
  /// `engine` and `inner` outlive the exports. `inputs` are the files that the run reads. Throws a
  /// Failure if a file cannot be written.
  Exports(const ExportOptions& options, const RunFacts& facts, const std::vector<std::string>& inputs,
          CGPSEngine& engine, Sink& inner);
  /// Completes the files of a run that has failed.
  ~Exports() override;

  bool OnData(const CGPSData& data) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin() override;
  bool OnSentence(const Fields& sentence) override;
  bool OnString(const CString& text) override;
  bool WantsSky() const override { return !exports_.empty() || inner_.WantsSky(); }
  bool OnSky(const Sky& sky) override;
  void SetReference(std::optional<Moment> reference) override;

  Sink* Records() override { return this; }
  bool WantsTexts() const override { return !exports_.empty(); }
  /// Writes what is new. Throws a Failure if a file cannot be written. A sink is called from inside the
  /// library, and so leaves that until it is asked.
  void Step() override;
  /// The stated time of the recording is over.
  bool IsDone() const override { return filter_.IsOver(); }
  /// Completes the files; throws as Step does. To be called ahead of the engine's own end.
  bool Finish() override;

 private:
  /// An epoch that waits for the sentence which gave it.
  struct Held {
    PositionEpoch epoch;
    CGPSData data;
  };

  void Tell(const std::optional<PositionTail>& tail);
  void CountSatellites(PositionEpoch& epoch) const;
  void ResolveHeights(PositionEpoch& epoch, bool has_sentence);
  void ComplainOfDates();

  CGPSEngine& engine_;
  Sink& inner_;
  EpochReader reader_;
  Filter filter_;
  const Geoid geoid_;
  std::shared_ptr<Projection> projection_;  // until it knows its zone
  const std::string recording_;             // its name; empty for a receiver that sends now
  bool dated_ = false;
  bool undated_ = false, told_undated_ = false;  // some epoch was; the user knows
  std::optional<Held> held_;
  std::optional<Sky> sky_;            // the last one that has a list
  std::optional<double> separation_;  // the last one that was stated
  long long without_height_ = 0;      // fixes
  std::vector<std::unique_ptr<Export>> exports_;
};

}  // namespace host
