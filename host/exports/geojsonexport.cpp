#include "host/exports/export.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

/// A point a fix, so that each has all that is known of it.
class GeoJsonExport : public GrowingExport {
 public:
  GeoJsonExport(const ExportPath& path, const RunFacts& facts) : GrowingExport(path) {
    std::string& out = Text();
    out += R"({"type":"FeatureCollection","name":)";
    JsonWriter(out).Utf8(facts.source);
    out += ",\"features\":[";
  }

  void OnEpoch(const PositionEpoch& epoch) override {
    if (!epoch.valid) return;
    std::string& out = Text();
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

  std::string Tail() const override { return "\n]}\n"; }

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

  static void WriteProperties(JsonWriter& json, const PositionEpoch& epoch) {
    json.Member("time", std::string_view(IsoText(*epoch.time)));
    const auto known = [&](std::string_view key, const std::optional<double>& value, int decimals) {
      if (value) json.MemberFixed(key, *value, decimals);
    };
    known("height_msl_m", epoch.height_msl, 3);
    known("height_hae_m", HeightOf(epoch), 3);
    json.Member("fix", NameOfSignal(epoch.signal));
    json.Member("segment", epoch.segment);
    json.Member("used", epoch.used);
    json.Member("in_view", epoch.in_view);
    known("hdop", epoch.hdop, 2);
    known("pdop", epoch.pdop, 2);
    known("vdop", epoch.vdop, 2);
    known("speed_mps", epoch.speed, 3);
    known("course_deg", epoch.course, 2);
    known("mean_snr", epoch.strength, 1);
    if (!epoch.grid) return;
    json.MemberFixed("easting_m", epoch.grid->easting, 3);
    json.MemberFixed("northing_m", epoch.grid->northing, 3);
  }

  bool is_first_ = true;
};

}  // namespace

std::unique_ptr<Export> MakeGeoJsonExport(const ExportPath& path, const RunFacts& facts) {
  return std::make_unique<GeoJsonExport>(path, facts);
}

}  // namespace host
