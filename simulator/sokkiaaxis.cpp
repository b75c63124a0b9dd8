#include "simulator/beacon.h"
#include "simulator/languages.h"
#include "simulator/text.h"

namespace simulator {
namespace {

/// "$PMCAG," sentences, told apart by their number. Nothing is acknowledged.
class SokkiaAxis final : public BeaconCore {
 public:
  SokkiaAxis(const Options& options, const Model& model) : BeaconCore(options, model.baud, "GP") {
    LeaveFactory({"GGA", "GSA", "GSV", "VTG"});
  }

 private:
  Verdict Understand(std::string_view line) override {
    static constexpr Command<SokkiaAxis> kCommands[] = {
        {{"$PMCAG", "004"}, &SokkiaAxis::Report},    {{"$PMCAG", "005"}, &SokkiaAxis::SetOutput},
        {{"$PMCAG", "008"}, &SokkiaAxis::SetValues}, {{"$GPCRQ", ""}, &SokkiaAxis::ReportBeacon},
        {{"$GPMSK", ""}, &SokkiaAxis::TuneBeacon},
    };
    return Obey(*this, kCommands, Fields::OfSentence(line));
  }

  void Adapt(Epoch& epoch) const override { epoch.quality = HearsBeacon() ? 2 : 1; }

  bool Report(const Fields& f) {
    if (f[2] != "908") return false;
    Answer(
        Sentence(Format("PMCAG,908,15,,,,%.1f,,,,,,%s,,,,,", settings_.elevation_mask, Value("13").c_str())));
    return true;
  }

  // A 0, then pairs of a sentence, or the number of a report, and 1 or 0.
  bool SetOutput(const Fields& f) {
    if (f[2] != "0" || f.size() % 2 == 0) return false;
    for (std::size_t i = 3; i < f.size(); i += 2) {
      const auto on = Whole(f[i + 1], 0, 1);
      if (!on || (!HasMessage(f[i]) && !Whole(f[i], 900, 999))) return false;
      if (HasMessage(f[i])) Switch(f[i], *on == 1, UsualInterval());
    }
    return true;
  }

  // Eighteen fields; an empty one leaves its value alone.
  bool SetValues(const Fields& f) {
    if (f[2] != "15" || f.size() != 18) return false;
    if (!f[6].empty() && !SetMask(f[6])) return false;
    if (!f[12].empty()) SetValue("13", f[12]);
    return true;
  }
};

}  // namespace

std::unique_ptr<Receiver> MakeSokkiaAxis(const Options& options, const Model& model) {
  return std::make_unique<SokkiaAxis>(options, model);
}

}  // namespace simulator
