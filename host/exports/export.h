#pragma once

#include <memory>
#include <string>

#include "gpsengine/face/tally.h"
#include "gpsengine/sentences/sky.h"
#include "host/exports/exportfile.h"
#include "host/records/display.h"
#include "host/records/epoch.h"
#include "host/run/face.h"

namespace host {

/// What a run is about, for the heads of files.
struct RunFacts {
  std::string source;  ///< The recording or the port.
  std::string model;
  Geoid geoid = Geoid::none;
  Display display = {};
};

/// A file that is made of the epochs of a run. What it is told it keeps until Flush, so that it may be told
/// from inside the library. A file that cannot be made or written is a Failure.
class Export {
 public:
  virtual ~Export() = default;
  /// An epoch with a time that was not told before, whether or not it has a fix.
  virtual void OnEpoch(const PositionEpoch& epoch) = 0;
  /// The satellites of an epoch, before the next one's position.
  virtual void OnSky(const Sky& /*sky*/) {}
  /// Writes what is new.
  virtual void Flush() {}
  /// Completes the file.
  virtual void Finish(const Tally& tally) = 0;
};

/// A file that grows as the run goes.
class GrowingExport : public Export {
 public:
  explicit GrowingExport(const ExportPath& path) : file_(path) {}
  void Flush() override { file_.Flush(Tail()); }
  void Finish(const Tally&) override { file_.Close(Tail()); }

 protected:
  std::string& Text() { return file_.Text(); }
  /// What completes the file after the text so far.
  virtual std::string Tail() const { return {}; }

 private:
  GrowingFile file_;
};

/// A track in GPX 1.1.
std::unique_ptr<Export> MakeGpxExport(const ExportPath& path, const RunFacts& facts);
/// Tracks with times in KML 2.2.
std::unique_ptr<Export> MakeKmlExport(const ExportPath& path, const RunFacts& facts);
/// A table, comma-separated.
std::unique_ptr<Export> MakeCsvExport(const ExportPath& path, const RunFacts& facts);
/// Sentences in NMEA 0183.
std::unique_ptr<Export> MakeNmeaExport(const ExportPath& path, const RunFacts& facts);
/// Solutions as RTKLIB writes them.
std::unique_ptr<Export> MakePosExport(const ExportPath& path, const RunFacts& facts);
/// Points in GeoJSON.
std::unique_ptr<Export> MakeGeoJsonExport(const ExportPath& path, const RunFacts& facts);
/// A page for people, in HTML. It is written when the run begins and when it ends.
std::unique_ptr<Export> MakeReportExport(const ExportPath& path, const RunFacts& facts);

}  // namespace host
