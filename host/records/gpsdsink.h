#pragma once

#include <optional>
#include <string>

#include "host/records/geoid.h"
#include "host/records/jsonwriter.h"
#include "host/records/reports.h"
#include "host/records/sink.h"

namespace host {

/// The format "json": a JSON object a line, with the keys and units of gpsd's TPV, SKY, GST and RAW, and
/// objects of classes of our own, STATUS and EPHEMERIS, for what gpsd has none for. docs/json.md has the
/// table. What is not known is left out.
class GpsdSink : public Sink {
 public:
  /// `device` is what the objects name as their source.
  GpsdSink(std::string& out, const std::string& device, Geoid geoid);

  void SetReference(std::optional<Moment> reference) override { reference_ = reference; }
  void SetKinds(Kinds kinds) override { kinds_ = kinds; }

  bool OnData(const CGPSData& data) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin() override { return false; }
  bool WantsSky() const override { return true; }
  bool OnSky(const Sky& sky) override;
  bool OnSentence(const Fields& sentence) override;

 private:
  void Begin(JsonWriter& json, std::string_view name);
  void End(JsonWriter& json);
  void WriteTime(JsonWriter& json, double time_of_day, const CTime& published);
  void WritePosition(const CGPSData& data);
  bool WriteReports(const CGPSData& data);

  Moment ReferenceFor(const CTime& time) const { return reference_.value_or(time.GetTime() * 1000); }

  std::string& out_;
  std::string device_;  // as JSON; empty for none
  const std::string_view height_key_;
  std::optional<Moment> reference_;
  Kinds kinds_ = Kinds::All();
  ReportReader reports_;
  std::string iso_;  // the time at hand, kept for its memory
};

}  // namespace host
