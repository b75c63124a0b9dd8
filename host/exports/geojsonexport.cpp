#include "host/exports/export.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

constexpr std::string_view kGeoJsonTail = "\n]}\n";

/// A point a fix, so that each has all that is known of it.
class GeoJsonExport : public Export {
 public:
  GeoJsonExport(const ExportPath& path, const RunFacts& facts)
      : file_(path), projection_(facts.display.projection) {
    std::string& out = file_.Text();
    out += R"({"type":"FeatureCollection","name":)";
    JsonWriter(out).Utf8(facts.source);
    out += ",\"features\":[";
    GeoJsonExport::Flush();
  }

  void OnEpoch(const PositionEpoch& epoch) override {
    if (!epoch.fix) return;
    if (epoch.starts_segment || segment_ == 0) ++segment_;
    std::string& out = file_.Text();
    out += is_first_ ? "\n" : ",\n";
    is_first_ = false;
    JsonWriter json(out);
    json.BeginObject();
    json.Member("type", "Feature");
    json.Key("geometry");
    WritePoint(json, epoch);
    json.Key("properties");
    json.BeginObject();
    WriteProperties(json, epoch);
    json.EndObject();
    json.EndObject();
  }
  void Flush() override { file_.Flush(kGeoJsonTail); }
  void Finish(const Tally&) override { file_.Close(kGeoJsonTail); }

 private:
  /// The third coordinate is one above the ellipsoid, or none.
  static std::optional<double> HeightOf(const PositionEpoch& epoch) {
    if (!epoch.height_msl || !epoch.tail.separation) return std::nullopt;
    return *epoch.height_msl + *epoch.tail.separation;
  }

  static void WritePoint(JsonWriter& json, const PositionEpoch& epoch) {
    json.BeginObject();
    json.Member("type", "Point");
    json.Key("coordinates");
    json.BeginArray();
    json.Fixed(epoch.longitude, 9);
    json.Fixed(epoch.latitude, 9);
    if (const auto height = HeightOf(epoch)) json.Fixed(*height, 3);
    json.EndArray();
    json.EndObject();
  }

  void WriteProperties(JsonWriter& json, const PositionEpoch& epoch) {
    json.Member("time", std::string_view(IsoText(*epoch.time)));
    const auto known = [&](std::string_view key, const std::optional<double>& value, int decimals) {
      if (value) json.MemberFixed(key, *value, decimals);
    };
    known("height_msl_m", epoch.height_msl, 3);
    known("height_hae_m", HeightOf(epoch), 3);
    json.Member("fix", FixKindOf(epoch.signal).name);
    json.Member("segment", segment_);
    json.Member("used", epoch.used);
    json.Member("in_view", epoch.in_view);
    known("hdop", epoch.hdop, 2);
    known("pdop", epoch.pdop, 2);
    known("vdop", epoch.vdop, 2);
    known("speed_mps", epoch.speed, 3);
    known("course_deg", epoch.course, 2);
    known("mean_snr", epoch.strength, 1);
    if (!projection_) return;
    if (const auto place = projection_->Of(epoch.latitude, epoch.longitude)) {
      json.MemberFixed("easting_m", place->easting * projection_->Metres(), 3);
      json.MemberFixed("northing_m", place->northing * projection_->Metres(), 3);
    }
  }

  GrowingFile file_;
  const std::shared_ptr<Projection> projection_;
  bool is_first_ = true;
  int segment_ = 0;
};

}  // namespace

std::unique_ptr<Export> MakeGeoJsonExport(const ExportPath& path, const RunFacts& facts) {
  return std::make_unique<GeoJsonExport>(path, facts);
}

}  // namespace host
