#include "host/exports/export.h"
#include "host/exports/markup.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

constexpr std::string_view kGpxHead =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="gpsengine" xmlns="http://www.topografix.com/GPX/1/1")"
    R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance")"
    R"( xmlns:gpxtpx="http://www.garmin.com/xmlschemas/TrackPointExtension/v2")"
    R"( xsi:schemaLocation="http://www.topografix.com/GPX/1/1 http://www.topografix.com/GPX/1/1/gpx.xsd)"
    R"( http://www.garmin.com/xmlschemas/TrackPointExtension/v2)"
    R"( https://www8.garmin.com/xmlschemas/TrackPointExtensionv2.xsd">
)";
constexpr std::string_view kGpxSegmentEnd = "    </trkseg>\n";
constexpr std::string_view kGpxTail = "  </trk>\n</gpx>\n";

void AppendNumber(std::string& out, std::string_view tag, double value, int decimals) {
  ((out += '<') += tag) += '>';
  AppendFixed(out, value, decimals);
  ((out += "</") += tag) += '>';
}

void AppendNumber(std::string& out, std::string_view tag, const std::optional<double>& value, int decimals) {
  if (value) AppendNumber(out, tag, *value, decimals);
}

class GpxExport : public GrowingExport {
 public:
  GpxExport(const ExportPath& path, const RunFacts& facts) : GrowingExport(path) {
    std::string& out = Text();
    out += kGpxHead;
    out += "  <trk>\n    <name>";
    AppendMarkup(out, facts.source);
    out += "</name>\n    <src>";
    AppendMarkup(out, facts.model);
    out += "</src>\n";
  }

  // The order of the elements is the schema's.
  void OnEpoch(const PositionEpoch& epoch) override {
    if (!epoch.valid) return;
    std::string& out = Text();
    if (epoch.starts_segment) {
      if (std::exchange(in_segment_, true)) out += kGpxSegmentEnd;
      out += "    <trkseg>\n";
    }
    out += "      <trkpt lat=\"";
    AppendFixed(out, epoch.latitude, 9);
    out += "\" lon=\"";
    AppendFixed(out, epoch.longitude, 9);
    out += "\">";
    AppendNumber(out, "ele", epoch.height_msl, 3);
    out += "<time>";
    AppendIso(out, *epoch.time);
    out += "</time>";
    const std::string_view fix = FixKindOf(epoch.signal).gpx;
    if (!fix.empty()) ((out += "<fix>") += fix) += "</fix>";
    AppendNumber(out, "sat", epoch.used, 0);
    AppendNumber(out, "hdop", epoch.hdop, 2);
    AppendNumber(out, "vdop", epoch.vdop, 2);
    AppendNumber(out, "pdop", epoch.pdop, 2);
    if (epoch.speed) {
      out += "<extensions><gpxtpx:TrackPointExtension>";
      AppendNumber(out, "gpxtpx:speed", epoch.speed, 3);
      AppendNumber(out, "gpxtpx:course", epoch.course, 2);
      out += "</gpxtpx:TrackPointExtension></extensions>";
    }
    out += "</trkpt>\n";
  }

 private:
  std::string Tail() const override {
    return std::string(in_segment_ ? kGpxSegmentEnd : "").append(kGpxTail);
  }

  bool in_segment_ = false;
};

}  // namespace

std::unique_ptr<Export> MakeGpxExport(const ExportPath& path, const RunFacts& facts) {
  return std::make_unique<GpxExport>(path, facts);
}

}  // namespace host
