#include "host/exports/export.h"
#include "host/exports/markup.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

constexpr std::string_view kKmlHead =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<kml xmlns="http://www.opengis.net/kml/2.2" xmlns:gx="http://www.google.com/kml/ext/2.2">
  <Document>
    <name>)";
constexpr std::string_view kStyle =
    R"(    <Style id="track"><LineStyle><color>ffd18b2f</color><width>4</width></LineStyle></Style>
)";
constexpr std::string_view kKmlTail = "  </Document>\n</kml>\n";
constexpr std::string_view kKmlSegmentEnd = "      </gx:MultiTrack>\n    </Placemark>\n";
// A track names all its times before its places. Only this many are kept back; the next ones are another
// track of the same line.
constexpr int kMostOfTrack = 100;

class KmlExport : public GrowingExport {
 public:
  KmlExport(const ExportPath& path, const RunFacts& facts) : GrowingExport(path) {
    std::string& out = Text();
    out += kKmlHead;
    AppendMarkup(out, facts.source);
    out += "</name>\n    <description>";
    AppendMarkup(out, facts.model);
    out += "</description>\n";
    out += kStyle;
  }

  void OnEpoch(const PositionEpoch& epoch) override {
    if (!epoch.valid) return;
    if (epoch.starts_segment) {
      EndSegment();
      BeginSegment();
    } else if (points_ == kMostOfTrack || has_heights_ != epoch.height_msl.has_value()) {
      EndTrack();
    }
    ++points_;
    has_heights_ = epoch.height_msl.has_value();
    whens_ += "          <when>";
    AppendIso(whens_, *epoch.time);
    whens_ += "</when>\n";
    coords_ += "          <gx:coord>";
    AppendFixed(coords_, epoch.longitude, 9);
    coords_ += ' ';
    AppendFixed(coords_, epoch.latitude, 9);
    coords_ += ' ';
    AppendFixed(coords_, epoch.height_msl.value_or(0.0), 3);
    coords_ += "</gx:coord>\n";
  }

 private:
  void BeginSegment() {
    Text() += "    <Placemark>\n      <name>Track " + std::to_string(++segments_) +
              "</name>\n      <styleUrl>#track</styleUrl>\n      <gx:MultiTrack>\n"
              "        <gx:interpolate>1</gx:interpolate>\n";
  }
  void EndSegment() {
    if (segments_ == 0) return;
    EndTrack();
    Text() += kKmlSegmentEnd;
  }
  void EndTrack() {
    AppendTrack(Text());
    whens_.clear();
    coords_.clear();
    points_ = 0;
  }
  void AppendTrack(std::string& out) const {
    if (points_ == 0) return;
    out += "        <gx:Track>\n";
    if (has_heights_) out += "          <altitudeMode>absolute</altitudeMode>\n";
    out += whens_;
    out += coords_;
    out += "        </gx:Track>\n";
  }
  std::string Tail() const override {
    std::string tail;
    AppendTrack(tail);
    if (segments_ > 0) tail += kKmlSegmentEnd;
    return tail.append(kKmlTail);
  }

  int segments_ = 0;
  int points_ = 0;            // of the current track
  bool has_heights_ = false;  // likewise; without them it lies on the ground
  std::string whens_, coords_;
};

}  // namespace

std::unique_ptr<Export> MakeKmlExport(const ExportPath& path, const RunFacts& facts) {
  return std::make_unique<KmlExport>(path, facts);
}

}  // namespace host
