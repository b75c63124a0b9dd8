#include <algorithm>
#include <cmath>
#include <iterator>

#include "simulator/ashtechraw.h"
#include "simulator/beacon.h"
#include "simulator/ephemerisnews.h"
#include "simulator/languages.h"
#include "simulator/text.h"

namespace simulator {
namespace {

constexpr std::size_t kMostMeasured = 11;  // what hosts take in for an epoch

// "$PASHR,SAT": number, azimuth, elevation, signal and whether it is used, for each satellite.
std::string Sat(const Epoch& e) {
  std::string body = Format("PASHR,SAT,%02zu", e.views.size());
  for (const View& view : e.views) {
    body += Format(",%02d,%03ld,%02ld,%02d,%c", view.prn, std::lround(Degrees(view.azimuth)) % 360,
                   std::lround(Degrees(view.elevation)), view.snr, view.used ? 'U' : '-');
  }
  return Sentence(body);
}

/// "$PASHS," sets and is acknowledged, "$PASHQ," asks.
class Ashtech final : public BeaconCore {
 public:
  Ashtech(const Options& options, const Model& model)
      : BeaconCore(options, model.baud, "CR"), has_beacon_(model.has_beacon) {
    AddMessage("SAT", Sat);
    AddMessage("SNV", [this](const Epoch& e) { return Ephemerides(e); });
    AddMessage("MBN", [this](const Epoch& e) { return Measurements(e); });
    AddMessage("PBN", [this](const Epoch& e) { return Pbn(e.truth.time, RawTruth(e), e.dilution); });
    Settings factory;
    factory.values = {{"PDP", "40"}, {"HDP", "4"}, {"VDP", "4"}, {"SAV", "N"}, {"RCI", "1"}};
    LeaveFactory({"GGA", "GSA", "VTG", "SAT"}, factory);
  }

 private:
  Verdict Understand(std::string_view line) override {
    static constexpr Command<Ashtech> kCommands[] = {
        {{"$PASHS", "NME"}, &Ashtech::SetSentence},
        {{"$PASHS", "RAW"}, &Ashtech::SetRaw},
        {{"$PASHS", "RCI"}, &Ashtech::SetRawInterval},
        {{"$PASHS", "PEM"}, &Ashtech::SetElevation},
        {{"$PASHS", "PDP"}, &Ashtech::SetDilutionMask},
        {{"$PASHS", "HDP"}, &Ashtech::SetDilutionMask},
        {{"$PASHS", "VDP"}, &Ashtech::SetDilutionMask},
        {{"$PASHS", "RTC"}, &Ashtech::SetCorrections},
        {{"$PASHS", "SAV"}, &Ashtech::Save},
        {{"$PASHS", "RST"}, &Ashtech::Reset},
        {{"$PASHQ", "PAR"}, &Ashtech::ReportParameters},
    };
    static constexpr Command<Ashtech> kBeaconCommands[] = {
        {{"$GPMSK", ""}, &Ashtech::TuneBeacon},
        {{"$GPCRQ", ""}, &Ashtech::ReportBeacon},
    };
    const Fields fields = Fields::OfSentence(line);
    const Verdict verdict = Obey(*this, kCommands, fields);
    if (fields[0] == "$PASHS") {
      Answer(Sentence(verdict == Verdict::kDone ? "PASHR,ACK" : "PASHR,NAK"));
    } else if (verdict == Verdict::kUnknown && has_beacon_) {
      return Obey(*this, kBeaconCommands, fields);
    }
    return verdict;
  }

  void Adapt(Epoch& epoch) const override { epoch.quality = has_beacon_ && HearsBeacon() ? 2 : 1; }

  // Sentence or ALL, port, ON or OFF.
  bool SetSentence(const Fields& f) {
    const auto on = OnOff(f[4]);
    if (!on || f[3] != "A") return false;
    bool found = false;
    for (const std::string_view name : kSentences) {
      if (name != f[2] && f[2] != "ALL") continue;
      Switch(name, *on, UsualInterval());
      found = true;
    }
    return found;
  }

  bool SetRaw(const Fields& f) {
    const auto on = OnOff(f[4]);
    if (!on || f[3] != "A" || std::find(std::begin(kRaw), std::end(kRaw), f[2]) == std::end(kRaw))
      return false;
    if (f[2] == "SNV") told_.Forget();
    Switch(f[2], *on, RawInterval());
    return true;
  }

  bool SetRawInterval(const Fields& f) {
    const auto seconds = Number(f[2]);
    if (!seconds || *seconds < 0.05 || *seconds > 999) return false;
    SetValue("RCI", f[2]);
    for (const char* name : kRaw) {
      if (IsOn(name)) Switch(name, true, RawInterval());
    }
    return true;
  }

  Nanoseconds RawInterval() const { return FromSeconds(Number(Value("RCI")).value_or(1)); }

  bool SetElevation(const Fields& f) { return SetMask(f[2]); }

  bool SetDilutionMask(const Fields& f) {
    if (!Whole(f[2], 0, 99)) return false;
    SetValue(f[1], f[2]);
    return true;
  }

  // Whether corrections are used by themselves, and from which port they come.
  bool SetCorrections(const Fields& f) {
    const bool automatic = f[2] == "AUT" && (f[3] == "Y" || f[3] == "N");
    const bool remote = f[2] == "REM" && (f[3] == "A" || f[3] == "B");
    if (automatic || remote) SetValue(f[2], f[3]);
    return automatic || remote;
  }

  bool Save(const Fields& f) {
    if (f[2] != "Y" && f[2] != "N") return false;
    SetValue("SAV", f[2]);
    saved_ = f[2] == "Y" ? settings_ : factory_;
    return true;
  }

  bool Reset(const Fields&) {
    saved_ = factory_;
    Reboot(factory_, 2);
    return true;
  }

  // Lines for people, in columns.
  bool ReportParameters(const Fields&) {
    Answer(Format("PMD:1 ALT:%+09.2f PDP:%02d HDP:%02d VDP:%02d\r\n", 0.0, Mask("PDP"), Mask("HDP"),
                  Mask("VDP")));
    Answer(Format("PER:%06.2f RCI:%06.2f\r\n", 1 / options_.rate_hz, Number(Value("RCI")).value_or(1)));
    Answer(Format("PEM:%02.0f SAV:%s\r\n", settings_.elevation_mask, Value("SAV").c_str()));
    static constexpr const char* kColumns[] = {"ALM", "RMC", "POS", "GLL", "GXP", "GGA", "VTG", "GSN",
                                               "GRS", "GSA", "SAT", "GSV", "MSG", "RRE", "ZDA"};
    std::string names = "SENT:", states = "PRTA:";
    for (const char* name : kColumns) {
      names += Format(" %-3s", name);
      states += Format(" %-3s", IsOn(name) ? "ON" : "OFF");
    }
    Answer(names + "\r\n" + states + "\r\n");
    return true;
  }

  int Mask(std::string_view name) const { return Whole(Value(name), 0, 99).value_or(0); }

  // A raw epoch is taken when the receiver's own clock shows the round second, which is a little off the true
  // one.
  Truth RawTruth(const Epoch& e) const { return world_.TruthAt(world_.TrueSeconds(e.seconds)); }

  std::string Measurements(const Epoch& e) const {
    const auto observations = world_.Observe(e.seconds, settings_.elevation_mask, kMostMeasured);
    std::string messages;
    int to_follow = static_cast<int>(observations.size());
    for (const Observation& observation : observations) messages += Mbn(observation, --to_follow);
    return messages;
  }

  // What is new, and each satellite again in its turn.
  std::string Ephemerides(const Epoch& e) {
    constexpr double kTurnSeconds = 5;
    std::string messages;
    for (const Ephemeris& news : told_.Take(world_, e.seconds, e.views)) messages += Snv(news, e.truth.time);
    if (messages.empty() && !e.views.empty() && e.seconds >= next_turn_) {
      const View& view = e.views[turn_++ % e.views.size()];
      messages = Snv(world_.EphemerisAt(view.prn, e.seconds), e.truth.time);
    }
    if (!messages.empty()) next_turn_ = e.seconds + kTurnSeconds;
    return messages;
  }

  static constexpr const char* kSentences[] = {"GGA", "GSA", "GSV", "VTG", "RMC", "GLL", "ZDA", "SAT"};
  static constexpr const char* kRaw[] = {"MBN", "PBN", "SNV"};

  const bool has_beacon_;
  EphemerisNews told_;
  double next_turn_ = 0;
  std::size_t turn_ = 0;
};

}  // namespace

std::unique_ptr<Receiver> MakeAshtech(const Options& options, const Model& model) {
  return std::make_unique<Ashtech>(options, model);
}

}  // namespace simulator
