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

class CsvExport : public GrowingExport {
 public:
  CsvExport(const ExportPath& path, const RunFacts& facts)
      : GrowingExport(path), has_grid_(facts.display.projection != nullptr) {
    std::string& head = Text() += kHeads[0];
    (head += facts.geoid == Geoid::add ? "height_hae_m" : "height_msl_m") += kHeads[1];
    if (has_grid_) head += kHeads[2];
    head += '\n';
  }

  void OnEpoch(const PositionEpoch& epoch) override {
    if (!epoch.valid) return;
    std::string& out = Text();
    AppendIso(out, *epoch.time);
    Append(epoch.latitude, 9);
    Append(epoch.longitude, 9);
    Append(epoch.height, 3);
    (out += ',') += NameOfSignal(epoch.signal);
    Append(epoch.segment, 0);
    Append(epoch.used, 0);
    Append(epoch.in_view, 0);
    for (const auto& dilution : {epoch.hdop, epoch.pdop, epoch.vdop}) Append(dilution, 2);
    Append(epoch.speed, 3);
    Append(epoch.course, 2);
    Append(epoch.strength, 1);
    if (has_grid_) {
      Append(epoch.grid ? std::optional(epoch.grid->easting) : std::nullopt, 3);
      Append(epoch.grid ? std::optional(epoch.grid->northing) : std::nullopt, 3);
    }
    out += '\n';
  }

 private:
  void Append(const std::optional<double>& value, int decimals) {
    Text() += ',';
    if (value) AppendFixed(Text(), *value, decimals);
  }

  const bool has_grid_;
};

}  // namespace

std::unique_ptr<Export> MakeCsvExport(const ExportPath& path, const RunFacts& facts) {
  return std::make_unique<CsvExport>(path, facts);
}

}  // namespace host
