#include "simulator/beacon.h"
#include "simulator/languages.h"
#include "simulator/text.h"

namespace simulator {
namespace {

/// "$PSLIS," sets, "$PSLIQ," asks. Nothing is acknowledged.
class Starlink final : public BeaconCore {
 public:
  Starlink(const Options& options, const Model& model) : BeaconCore(options, model.baud, "GP") {
    LeaveFactory({"GGA", "GSA", "GSV", "VTG"});
  }

 private:
  Verdict Understand(std::string_view line) override {
    static constexpr Command<Starlink> kCommands[] = {
        {{"$PSLIS", "NME"}, &Starlink::SetSentence},  {{"$PSLIS", "ELM"}, &Starlink::SetElevation},
        {{"$PSLIS", "RST"}, &Starlink::Reset},        {{"$PSLIQ", "PAR"}, &Starlink::ReportParameters},
        {{"$PSLIQ", "NME"}, &Starlink::ReportBeacon}, {{"$GPMSK", ""}, &Starlink::TuneBeacon},
    };
    return Obey(*this, kCommands, Fields::OfSentence(line));
  }

  void Adapt(Epoch& epoch) const override { epoch.quality = HearsBeacon() ? 2 : 1; }

  bool SetSentence(const Fields& f) {
    const auto on = OnOff(f[4]);
    if (!on || f[3] != "A") return false;
    if (f[2] == "ALL") {
      if (!*on) settings_.output.clear();
      return !*on;
    }
    if (!HasMessage(f[2])) return false;
    Switch(f[2], *on, UsualInterval());
    return true;
  }

  bool SetElevation(const Fields& f) { return SetMask(f[2]); }

  bool Reset(const Fields& f) {
    if (f[2] != "CLR") return false;
    Reboot(factory_, 3);
    return true;
  }

  bool ReportParameters(const Fields&) {
    std::string rates;
    for (const char* name : {"GGA", "GSA", "ZDA", "GLL", "VTG", "GSV"}) {
      rates += Format(",%s:%.1f", name, IsOn(name) ? options_.rate_hz : 0.0);
    }
    Answer(Sentence("PSLIR,PAR,NMEA" + rates));
    Answer(Sentence(
        Format("PSLIR,PAR,MODE,ELM:%.0f,DGP:%s", settings_.elevation_mask, HearsBeacon() ? "ON" : "OFF")));
    return true;
  }
};

}  // namespace

std::unique_ptr<Receiver> MakeStarlink(const Options& options, const Model& model) {
  return std::make_unique<Starlink>(options, model);
}

}  // namespace simulator
