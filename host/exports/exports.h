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
  std::string gpx, kml, csv, nmea, report;
  FilterOptions filter;

  bool IsAny() const { return !(gpx + kml + csv + nmea + report).empty(); }
};

/// Filters what is published on its way to another sink, and writes files of what passes.
class Exports : public Sink, public Outlet {
 public:
  /// `engine` and `inner` outlive the exports. `input` is the file that the run reads, if any. Throws a
  /// Failure if a file cannot be written.
  Exports(const ExportOptions& options, const RunFacts& facts, const std::string& input, CGPSEngine& engine,
          Sink& inner);
  /// Completes the files of a run that has failed.
  ~Exports() override;

  bool OnData(const CGPSData& data) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin() override;
  bool OnString(const CString& text) override { return inner_.OnString(text); }
  void SetReference(std::optional<Moment> reference) override;

  Sink* Records() override { return this; }
  /// Writes what is new. Throws a Failure if a file cannot be written. A sink is called from inside the
  /// library, and so leaves that until it is asked.
  void Step() override;
  /// The stated time of the recording is over.
  bool IsDone() const override { return filter_.IsOver(); }
  /// Completes the files; throws as Step does. To be called ahead of the engine's own end.
  bool Finish() override;

 private:
  Tally TallyOf() const;

  CGPSEngine& engine_;
  Sink& inner_;
  EpochReader reader_;
  Filter filter_;
  std::vector<std::unique_ptr<Export>> exports_;
};

}  // namespace host
