#pragma once

#include <optional>
#include <string>

#include "gpsengine/face/report.h"
#include "host/records/jsonwriter.h"
#include "host/records/sink.h"
#include "host/records/units.h"
#include "host/run/face.h"

namespace host {

/// The format "json": a JSON object a line, with the keys and units of gpsd's TPV, SKY, GST and RAW, and
/// objects of classes of our own, STATUS and EPHEMERIS, for what gpsd has none for. docs/json.md has the
/// table. What is not known is left out.
class GpsdSink : public Sink {
 public:
  /// `device` is what the objects name as their source.
  GpsdSink(std::string& out, const std::string& device, Geoid geoid);

  void SetReference(std::optional<Moment> reference) override;
  void SetKinds(Kinds kinds) override { kinds_ = kinds; }

  bool OnData(const Record& record) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin(const Block& block) override;
  bool WantsSky() const override { return true; }
  bool OnSky(const Sky& sky) override;
  bool OnSentence(const Fields& sentence) override;

 private:
  void Begin(JsonWriter& json, std::string_view name);
  void End(JsonWriter& json);
  void WriteTime(JsonWriter& json, Moment time);
  void WritePosition(const PositionEpoch& epoch);
  Moment Date(double time_of_day) const;
  bool WriteReports(const CGPSData& data);

  std::string& out_;
  std::string device_;  // as JSON; empty for none
  const std::string_view height_key_;
  std::optional<Moment> reference_;
  std::optional<Moment> near_;  // of a recording: the reference, or the last position after it
  Kinds kinds_ = Kinds::All();
  ReportReader reports_;
  std::optional<Moment> written_;  // the last time
  std::string iso_;                // the same as text
};

}  // namespace host
