#pragma once

#include <array>
#include <optional>
#include <string>

#include "host/records/geoid.h"
#include "host/records/jsonwriter.h"
#include "host/records/moment.h"
#include "host/records/reports.h"
#include "host/records/sink.h"

namespace host {

/// The format "json": a JSON object a line, with the keys and units of gpsd's TPV, SKY and RAW, and objects
/// of classes of our own, STATUS and EPHEMERIS, for what gpsd has none for. docs/json.md has the table. What
/// is not known is left out.
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

 private:
  using Table = std::array<CGPSSatelliteData, kSatelliteSlots>;

  void Begin(JsonWriter& json, std::string_view name);
  void End(JsonWriter& json);
  void WriteTime(JsonWriter& json, const CGPSData& data);
  void WritePosition(const CGPSData& data);
  bool WriteSatellites(const CGPSData& data);
  bool WriteReports(const CGPSData& data);

  Moment ReferenceFor(const CTime& time) const { return reference_.value_or(time.GetTime() * 1000); }

  std::string& out_;
  std::string device_;  // as JSON; empty for none
  const std::string_view height_key_;
  std::optional<Moment> reference_;
  Kinds kinds_ = Kinds::All();
  std::optional<Table> table_;  // the satellites that were last shown
  bool had_position_ = false;   // ahead of any satellites
  bool tells_count_ = false;    // a position has told how many satellites it uses
  bool tells_used_ = false;     // the receiver has told which
  ReportReader reports_;
  std::string iso_;  // the time at hand, kept for its memory
};

}  // namespace host
