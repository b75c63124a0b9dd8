#include "host/exports/export.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

// docs/program.md has what they hold.
constexpr std::string_view kHeads[] = {"time,lat,lon,",
                                       ",fix,segment,used,in_view,hdop,pdop,vdop,"
                                       "speed_mps,course_deg,mean_snr",
                                       ",easting_m,northing_m"};

class CsvExport : public Export {
 public:
  CsvExport(const ExportPath& path, const RunFacts& facts)
      : file_(path), projection_(facts.display.projection) {
    std::string& head = file_.Text() += kHeads[0];
    (head += facts.geoid == Geoid::add ? "height_hae_m" : "height_msl_m") += kHeads[1];
    if (projection_) head += kHeads[2];
    head += '\n';
    CsvExport::Flush();
  }

  void OnEpoch(const PositionEpoch& epoch) override {
    if (!epoch.fix) return;
    if (epoch.starts_segment || segment_ == 0) ++segment_;
    std::string& out = file_.Text();
    AppendIso(out, *epoch.time);
    Append(epoch.latitude, 9);
    Append(epoch.longitude, 9);
    Append(epoch.height, 3);
    (out += ',') += FixKindOf(epoch.signal).name;
    Append(segment_, 0);
    Append(epoch.used, 0);
    Append(epoch.in_view, 0);
    for (const auto& dilution : {epoch.hdop, epoch.pdop, epoch.vdop}) Append(dilution, 2);
    Append(epoch.speed, 3);
    Append(epoch.course, 2);
    Append(epoch.strength, 1);
    if (projection_) AppendGrid(epoch);
    out += '\n';
  }
  void Flush() override { file_.Flush(""); }
  void Finish(const Tally&) override { file_.Close(""); }

 private:
  void Append(const std::optional<double>& value, int decimals) {
    file_.Text() += ',';
    if (value) AppendFixed(file_.Text(), *value, decimals);
  }

  void AppendGrid(const PositionEpoch& epoch) {
    const auto place = projection_->Of(epoch.latitude, epoch.longitude);
    for (const auto length : {&Projection::Place::easting, &Projection::Place::northing})
      Append(place ? std::optional((*place).*length * projection_->Metres()) : std::nullopt, 3);
  }

  GrowingFile file_;
  const std::shared_ptr<Projection> projection_;
  int segment_ = 0;
};

}  // namespace

std::unique_ptr<Export> MakeCsvExport(const ExportPath& path, const RunFacts& facts) {
  return std::make_unique<CsvExport>(path, facts);
}

}  // namespace host
