#include "host/exports/export.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"

namespace host {

namespace {

// docs/program.md has what they hold.
constexpr std::string_view kHeads[] = {"time,lat,lon,",
                                       ",fix,segment,used,in_view,hdop,pdop,vdop,"
                                       "speed_mps,course_deg,mean_snr\n"};

class CsvExport : public Export {
 public:
  CsvExport(const ExportPath& path, Geoid geoid) : file_(path) {
    ((file_.Text() += kHeads[0]) += geoid == Geoid::add ? "height_hae_m" : "height_msl_m") += kHeads[1];
    CsvExport::Flush();
  }

  void OnEpoch(const PositionEpoch& epoch, const CGPSData& data) override {
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
    Append(data.m_dAverageSNR > 0.0 ? std::optional(data.m_dAverageSNR) : std::nullopt, 1);
    out += '\n';
  }
  void Flush() override { file_.Flush(""); }
  void Finish(const Tally&) override { file_.Close(""); }

 private:
  void Append(const std::optional<double>& value, int decimals) {
    file_.Text() += ',';
    if (value) AppendFixed(file_.Text(), *value, decimals);
  }

  GrowingFile file_;
  int segment_ = 0;
};

}  // namespace

std::unique_ptr<Export> MakeCsvExport(const ExportPath& path, const RunFacts& facts) {
  return std::make_unique<CsvExport>(path, facts.geoid);
}

}  // namespace host
