#include "host/exports/export.h"
#include "host/exports/reportpage.h"

namespace host {

namespace {

class ReportExport : public Export {
 public:
  ReportExport(ExportPath path, RunFacts facts) : path_(std::move(path)), facts_(std::move(facts)) {
    ReportExport::Finish({});  // tells now whether it can be written
  }

  void OnEpoch(const PositionEpoch& epoch) override { run_.Add(epoch); }
  void OnSky(const Sky& sky) override { run_.AddSatellites(sky); }
  void Finish(const Tally& tally) override { ReplaceFile(path_, ReportPage(facts_, run_, tally)); }

 private:
  const ExportPath path_;
  const RunFacts facts_;
  RunStatistics run_;
};

}  // namespace

std::unique_ptr<Export> MakeReportExport(const ExportPath& path, const RunFacts& facts) {
  return std::make_unique<ReportExport>(path, facts);
}

}  // namespace host
