#include <algorithm>
#include <cmath>

#include "simulator/beacon.h"
#include "simulator/bytes.h"
#include "simulator/languages.h"
#include "simulator/navdata.h"
#include "simulator/text.h"

namespace simulator {
namespace {

constexpr std::size_t kChannels = 12;

/// "$BIN", block number, data length, data, sum of the data bytes, line end.
std::string Block(std::uint16_t number, const std::string& data) {
  std::string block = "$BIN";
  AppendLittle(block, number);
  AppendLittle(block, static_cast<std::uint16_t>(data.size()));
  block += data;
  std::uint16_t sum = 0;
  for (const char c : data) sum = static_cast<std::uint16_t>(sum + static_cast<unsigned char>(c));
  AppendLittle(block, sum);
  return block + "\r\n";
}

/// Commands that begin with $J. A good one is answered with "$>", and some with more.
class JFamily final : public BeaconCore {
 public:
  JFamily(const Options& options, const Model& model) : BeaconCore(options, model.baud, "CR") {
    AddMessage("D1", [this](const Epoch& e) { return LbandStatus(e); });
    AddMessage("95", [this](const Epoch& e) { return NavigationBlock(e); });
    AddMessage("96", [this](const Epoch& e) { return ObservationBlock(e); });
    Settings factory;
    factory.values = {{"DIFF", "WAAS"}, {"APP", "1"}, {"FREQ", "0"}, {"RATE", "1200"}};
    LeaveFactory({"GGA", "GSA", "GSV", "VTG"}, factory);
  }

 private:
  Verdict Understand(std::string_view line) override {
    static constexpr Command<JFamily> kCommands[] = {
        {{"$JOFF", ""}, &JFamily::AllOff},         {{"$JASC", ""}, &JFamily::SetSentence},
        {{"$JBIN", ""}, &JFamily::SetBlock},       {{"$JMASK", ""}, &JFamily::SetElevation},
        {{"$JFREQ", ""}, &JFamily::SetFrequency},  {{"$JDIFF", ""}, &JFamily::SetSource},
        {{"$JAPP", ""}, &JFamily::SetApplication}, {{"$JSAVE", ""}, &JFamily::Save},
        {{"$JSHOW", ""}, &JFamily::Show},          {{"$JI", ""}, &JFamily::Identify},
        {{"$JGEO", ""}, &JFamily::ShowSatellite},  {{"$JLBEAM", ""}, &JFamily::ShowBeams},
        {{"$GPMSK", ""}, &JFamily::TuneBeacon},    {{"$GPCRQ", ""}, &JFamily::ReportBeacon},
    };
    return Obey(*this, kCommands, Fields::OfSentence(line));
  }

  void Adapt(Epoch& epoch) const override {
    const std::string& source = Value("DIFF");
    const bool corrected = (source == "WAAS" && Value("APP") == "1") ||
                           (source == "LBAND" && Value("APP") == "2") ||
                           (source == "BEACON" && HearsBeacon());
    epoch.quality = corrected ? 2 : 1;
  }

  bool Good() {
    Answer("$>\r\n");
    return true;
  }

  bool AllOff(const Fields&) {
    settings_.output.clear();
    return Good();
  }

  // "GPGGA" or "D1", and how often a second.
  bool SetSentence(const Fields& f) {
    const std::string_view name = f[1].substr(0, 2) == "GP" ? f[1].substr(2) : f[1];
    const auto rate = Number(f[2]);
    const bool known = f[1] == "D1" || (f[1].size() == 5 && HasMessage(name));
    if (!known || !rate || *rate < 0 || *rate > 20) return false;
    Switch(name, *rate > 0, FromSeconds(*rate > 0 ? 1 / *rate : 0));
    return Good();
  }

  // The number of the block, and its interval in seconds.
  bool SetBlock(const Fields& f) {
    const auto interval = Number(f[2]);
    if ((f[1] != "95" && f[1] != "96") || !interval || (*interval != 0 && *interval < 0.05)) return false;
    Switch(f[1], *interval > 0, FromSeconds(*interval));
    return Good();
  }

  bool SetElevation(const Fields& f) { return SetMask(f[1]) && Good(); }

  // In kilohertz; 0 leaves the choice to the receiver.
  bool SetFrequency(const Fields& f) {
    if (!Number(f[1]) || !Whole(f[2], 0, 4800)) return false;
    SetValue("FREQ", f[1]);
    SetValue("RATE", f[2]);
    return Good();
  }

  bool SetSource(const Fields& f) {
    for (const char* source : {"OFF", "BEACON", "LBAND", "WAAS"}) {
      if (f[1] != source) continue;
      SetValue("DIFF", source);
      return Good();
    }
    return false;
  }

  // Another application is another program: the receiver starts over with the settings at hand.
  bool SetApplication(const Fields& f) {
    if (!Whole(f[1], 1, 2)) return false;
    Good();
    if (f[1] == Value("APP")) return true;
    SetValue("APP", f[1]);
    Reboot(Settings(settings_), 3);
    return true;
  }

  bool Save(const Fields&) {
    saved_ = settings_;
    Answer("$>SAVING CONFIGURATION. PLEASE WAIT...\r\n");
    Answer("$>Save Complete\r\n");
    return true;
  }

  bool Show(const Fields&) {
    const auto show = [this](const std::string& setting) { Answer("$>JSHOW," + setting + "\r\n"); };
    show(Format("BAUD,%d", baud_));
    for (const auto& [name, interval] : settings_.output) {
      const double seconds = std::chrono::duration<double>(interval).count();
      if (name == "95" || name == "96") {
        show(Format("BIN,%s,%.1f", name.c_str(), seconds));
      } else {
        show(Format("ASC,%s%s,%.1f", name == "D1" ? "" : "GP", name.c_str(), 1 / seconds));
      }
    }
    show(Format("FREQ,%.4f,%s", FrequencyMegahertz(), Value("RATE").c_str()));
    show("DIFF," + Value("DIFF"));
    show(Format("MASK,%.0f", settings_.elevation_mask));
    return true;
  }

  bool Identify(const Fields&) {
    Answer("$>JI,810133,1,3,14052020,01/01/2020,12/31/2039,3.5,38\r\n");
    return true;
  }

  bool ShowSatellite(const Fields&) {
    Answer("$>JGEO,SENT=1575.4200,USED=1575.4200,PRN=122,LON=-54,EL=9.7,AZ=114.0\r\n");
    return true;
  }

  bool ShowBeams(const Fields&) {
    Answer(Format("$>JLBEAM,SENT=%.4f,USED=%.4f,BAUD=%s,EUROPE\r\n", FrequencyMegahertz(), UsedMegahertz(),
                  Value("RATE").c_str()));
    return true;
  }

  double FrequencyMegahertz() const { return Number(Value("FREQ")).value_or(0) / 1000; }
  double UsedMegahertz() const { return FrequencyMegahertz() > 0 ? FrequencyMegahertz() : 1535.1525; }

  // Second of the week, week, frequency, lock, error rate, gain, tuning, Doppler, three states, navigation.
  std::string LbandStatus(const Epoch& e) const {
    return Format("$RD1,%.0f,%d,%.4f,%d,0,39,-611.5,0,1f,1f,%d,999993\r\n", e.truth.time.seconds,
                  e.truth.time.week, UsedMegahertz(), Value("DIFF") == "LBAND" ? 1 : 0,
                  e.quality == 2 ? 0 : 5);
  }

  // The three subframes of one satellite; each satellite in view has its turn.
  std::string NavigationBlock(const Epoch& e) {
    if (e.views.empty()) return "";
    std::string data;
    const int prn = e.views[turn_++ % e.views.size()].prn;
    AppendLittle(data, static_cast<std::uint16_t>(prn));
    AppendLittle(data, std::uint16_t{0});
    AppendLittle(data, static_cast<std::uint32_t>(e.truth.time.seconds) / 6);
    const Ephemeris ephemeris = world_.EphemerisAt(prn, e.seconds);
    for (int id = 1; id <= 3; ++id) {
      for (const std::uint32_t word : Subframe(id, ephemeris, e.truth.time)) AppendLittle(data, word << 6);
    }
    return Block(95, data);
  }

  // Twelve channels; those not in use are zero.
  std::string ObservationBlock(const Epoch& e) const {
    std::string data;
    AppendLittle(data, std::uint16_t{0});
    AppendLittle(data, static_cast<std::uint16_t>(e.truth.time.week));
    AppendLittle(data, e.truth.time.seconds);
    const auto observations = world_.Observe(e.seconds, settings_.elevation_mask, kChannels);
    constexpr double kWavelength = kSpeedOfLight / 1575.42e6;
    constexpr std::uint32_t kLongLock = 255, kPhaseIsGood = 1, kLockIsLonger = 2;
    for (const Observation& o : observations) {
      // 10 log (0.8192 n) is the signal above 30 dB-Hz.
      const auto signal = std::lround(std::pow(10.0, (o.view.snr - 30) / 10.0) / 0.8192);
      AppendLittle(data, kLongLock << 16 | static_cast<std::uint32_t>(std::clamp(signal, 1L, 255L)) << 8 |
                             static_cast<std::uint32_t>(o.view.prn));
      // The rate of the range, in steps of 1/4096 m/s.
      const auto rate = static_cast<std::uint32_t>(std::lround(-o.doppler * kWavelength * 4096));
      AppendLittle(data, rate << 4 | kPhaseIsGood | kLockIsLonger);
      AppendLittle(data, o.pseudorange);
      AppendLittle(data, o.phase * kWavelength);
    }
    data.resize(12 + kChannels * 24, '\0');
    return Block(96, data);
  }

  std::size_t turn_ = 0;
};

}  // namespace

std::unique_ptr<Receiver> MakeJFamily(const Options& options, const Model& model) {
  return std::make_unique<JFamily>(options, model);
}

}  // namespace simulator
