#include <algorithm>
#include <initializer_list>
#include <iterator>

#include "simulator/core.h"
#include "simulator/ephemerisnews.h"
#include "simulator/languages.h"
#include "simulator/oemlog.h"
#include "simulator/oemraw.h"
#include "simulator/text.h"

namespace simulator {
namespace {

/// A log that goes on until it is taken off. Those without a message of the simulator are accepted and stay
/// empty.
struct LogName {
  std::string_view name, message;
};

constexpr LogName kLogs[] = {
    {"GPGGA", "GGA"},
    {"GPGLL", "GLL"},
    {"GPGSA", "GSA"},
    {"GPGSV", "GSV"},
    {"GPRMC", "RMC"},
    {"GPVTG", "VTG"},
    {"GPZDA", "ZDA"},
    {"GPALM", ""},
    {"GPGRS", ""},
    {"GPGST", ""},
    {"GPRMB", ""},
    {"GPGGALONG", ""},
    {"GPGGARTK", ""},
    {"RANGEB", "RANGEB"},
    {"RANGECMPB", "RANGECMPB"},
    {"RAWEPHEMB", "RAWEPHEMB"},
    {"GPSEPHEMB", "GPSEPHEMB"},
    {"ALMANACB", "ALMANACB"},
};

bool IsPort(std::string_view word) {
  return word.size() == 4 && SameWord(word.substr(0, 3), "COM");
}

bool OneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::any_of(words.begin(), words.end(), [word](std::string_view w) { return SameWord(word, w); });
}

std::string Upper(std::string_view word) {
  std::string text(word);
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return text;
}

/// Plain command lines in either case, each answered with "<OK" and the port's prompt. LOG and UNLOG switch
/// logs.
class Gsr2650 final : public Core {
 public:
  Gsr2650(const Options& options, const Model& model) : Core(options, model.baud) {
    AddMessage("RANGEB", [this](const Epoch& e) { return RangeLog(e.truth.time, Observe(e)); });
    AddMessage("RANGECMPB", [this](const Epoch& e) { return CompressedRangeLog(e.truth.time, Observe(e)); });
    AddMessage("RAWEPHEMB",
               [this](const Epoch& e) { return ChangedEphemerides(e, raw_ephemerides_, RawEphemerisLog); });
    AddMessage("GPSEPHEMB",
               [this](const Epoch& e) { return ChangedEphemerides(e, ephemerides_, EphemerisLog); });
    AddMessage("ALMANACB", [this](const Epoch& e) { return ChangedAlmanac(e); });
    Settings factory;
    factory.values = {
        {"RTKSOURCE", "NONE,ANY"}, {"PSRDIFFSOURCE", "NONE,ANY"}, {"SBASCONTROL", "DISABLE,AUTO"}};
    LeaveFactory({"GGA", "GSA", "GSV", "VTG"}, factory);
  }

 private:
  using Data = std::string (Gsr2650::*)() const;

  Verdict Understand(std::string_view line) override {
    static constexpr Command<Gsr2650> kCommands[] = {
        {{"LOG", ""}, &Gsr2650::Log},
        {{"UNLOG", ""}, &Gsr2650::Unlog},
        {{"ECUTOFF", ""}, &Gsr2650::SetElevation},
        {{"RTKSOURCE", ""}, &Gsr2650::SetRtkSource},
        {{"PSRDIFFSOURCE", ""}, &Gsr2650::SetRangeSource},
        {{"SBASCONTROL", ""}, &Gsr2650::SetSbas},
        {{"ASSIGNLBAND", "CDGPS"}, &Gsr2650::AssignBand},
        {{"ASSIGNOMNI", "USER"}, &Gsr2650::AssignBand},
        {{"UNDULATION", ""}, &Gsr2650::SetUndulation},
        {{"DATUM", ""}, &Gsr2650::SetDatum},
        {{"USERDATUM", ""}, &Gsr2650::DefineDatum},
        {{"SAVECONFIG", ""}, &Gsr2650::Save},
        {{"RESET", ""}, &Gsr2650::Reset},
    };
    log_once_.clear();
    const Verdict verdict = Obey(*this, kCommands, Fields::OfWords(line));
    Answer(verdict == Verdict::kDone ? "\r\n<OK\r\n[COM2]" : "\r\n<ERROR:Invalid Message\r\n[COM2]");
    if (!log_once_.empty()) Answer(log_once_);
    return verdict;
  }

  void Adapt(Epoch& epoch) const override {
    const std::string &rtk = Value("RTKSOURCE"), &range = Value("PSRDIFFSOURCE");
    if (rtk.starts_with("OMNISTAR") || range.starts_with("OMNISTAR") || range.starts_with("CDGPS")) {
      epoch.quality = 2;
    } else if (Value("SBASCONTROL").starts_with("ENABLE")) {
      epoch.quality = 9;
    }
    if (const auto undulation = Number(Value("UNDULATION"))) epoch.geoid_separation = *undulation;
  }

  // LOG [port] name [trigger [period ...]]
  bool Log(const Fields& f) {
    const std::size_t at = IsPort(f[1]) ? 2 : 1;
    const std::string_view trigger = f[at + 1];
    if (SameWord(trigger, "ONCE") || trigger.empty()) return LogOnce(f[at]);
    const LogName* log = FindLog(f[at]);
    if (log == nullptr) return false;
    const auto period = SameWord(trigger, "ONCHANGED") ? 1.0 : Number(f[at + 2]);
    if (!OneOf(trigger, {"ONTIME", "ONCHANGED"}) || !period || *period < 0.05) return false;
    if (log->message == "RAWEPHEMB") raw_ephemerides_.Forget();
    if (log->message == "GPSEPHEMB") ephemerides_.Forget();
    if (log->message == "ALMANACB") almanac_.Forget();
    if (!log->message.empty()) Switch(log->message, true, FromSeconds(*period));
    return true;
  }

  bool Unlog(const Fields& f) {
    const LogName* log = FindLog(f[IsPort(f[1]) ? 2 : 1]);
    if (log == nullptr) return false;
    Switch(log->message, false, {});
    return true;
  }

  static const LogName* FindLog(std::string_view name) {
    const auto* log = std::find_if(std::begin(kLogs), std::end(kLogs),
                                   [name](const LogName& l) { return SameWord(l.name, name); });
    return log == std::end(kLogs) ? nullptr : log;
  }

  bool LogOnce(std::string_view name) {
    static constexpr struct {
      std::string_view name;
      Data data;
    } kOnce[] = {
        {"ECUTOFFA", &Gsr2650::MaskData},           {"LOGLISTA", &Gsr2650::LogListData},
        {"RXCONFIGA", &Gsr2650::ConfigurationData}, {"RTKSOURCEA", &Gsr2650::RtkSourceData},
        {"SBASCONTROLA", &Gsr2650::SbasData},       {"PSRDIFFSOURCEA", &Gsr2650::RangeSourceData},
        {"OMNIINFOA", &Gsr2650::OmniInfoData},      {"OMNISTATA", &Gsr2650::OmniStateData},
        {"OMNIHPPOSA", &Gsr2650::OmniPositionData}, {"WAAS1A", &Gsr2650::WaasData},
    };
    for (const auto& log : kOnce) {
      if (!SameWord(log.name, name)) continue;
      log_once_ = OemText(log.name, Now(), (this->*log.data)());
      return true;
    }
    return false;
  }

  std::string MaskData() const { return Format("%.9f", settings_.elevation_mask); }
  std::string RtkSourceData() const { return Value("RTKSOURCE"); }
  std::string RangeSourceData() const { return Value("PSRDIFFSOURCE"); }
  std::string SbasData() const { return Value("SBASCONTROL") + ",0,NONE"; }
  std::string ConfigurationData() const { return "ECUTOFF," + MaskData() + ",SBASCONTROL," + SbasData(); }
  std::string WaasData() const { return "122,ffc7fffffff0000000000000000000400000000000000000000000,2"; }

  std::string LogListData() const {
    std::string logs;
    int count = 0;
    for (const LogName& log : kLogs) {
      const auto it = settings_.output.find(log.message);
      if (log.message.empty() || it == settings_.output.end()) continue;
      logs += Format(",COM2,%s,ONTIME,%.6f,0.000000,NOHOLD", std::string(log.name).c_str(),
                     std::chrono::duration<double>(it->second).count());
      ++count;
    }
    return std::to_string(count) + logs;
  }

  std::string OmniInfoData() const { return "1019671,VBS,1,0,HP,1,0,0,0"; }

  std::string OmniStateData() const {
    const std::string& tuned = Value("ASSIGNOMNI");
    return (tuned.empty() ? "1536660000,1200" : tuned) + ",TRACKING,40.1,-23.6";
  }

  std::string OmniPositionData() const {
    const Geodetic p = EpochNow().truth.geodetic;
    return Format("SOL_COMPUTED,OMNISTAR_HP,%.8f,%.8f,%.3f,%.1f,WGS84", Degrees(p.latitude),
                  Degrees(p.longitude), p.height - options_.geoid_separation, options_.geoid_separation);
  }

  bool SetElevation(const Fields& f) { return SetMask(f[1]); }

  // A source, and which station of it; any by default.
  bool SetSource(const Fields& f, std::initializer_list<std::string_view> sources) {
    if (!OneOf(f[1], sources)) return false;
    SetValue(Upper(f[0]), Upper(f[1]) + ',' + (f[2].empty() ? "ANY" : Upper(f[2])));
    return true;
  }

  bool SetRtkSource(const Fields& f) { return SetSource(f, {"NONE", "AUTO", "OMNISTAR"}); }
  bool SetRangeSource(const Fields& f) { return SetSource(f, {"NONE", "AUTO", "OMNISTAR", "CDGPS", "SBAS"}); }

  bool SetSbas(const Fields& f) {
    if (!OneOf(f[1], {"ENABLE", "DISABLE"}) || !OneOf(f[2], {"", "AUTO", "ANY"})) return false;
    SetValue("SBASCONTROL", Upper(f[1]) + ',' + (f[2].empty() ? "AUTO" : Upper(f[2])));
    return true;
  }

  // Service, whose it is, frequency, bit rate.
  bool AssignBand(const Fields& f) {
    if (!Number(f[2]) || !Whole(f[3], 300, 4800)) return false;
    SetValue(Upper(f[0]), std::string(f[2]) + ',' + std::string(f[3]));
    return true;
  }

  // From the table, or a number of metres of the user's.
  bool SetUndulation(const Fields& f) {
    const bool user = SameWord(f[1], "USER");
    if (user ? !Number(f[2]) : !SameWord(f[1], "TABLE")) return false;
    SetValue("UNDULATION", user ? f[2] : "");
    return true;
  }

  bool SetDatum(const Fields& f) { return OneOf(f[1], {"WGS84", "USER"}); }

  // Axis, flattening, three shifts, three turns, scale.
  bool DefineDatum(const Fields& f) {
    constexpr std::size_t kParameters = 9;
    if (f.size() != kParameters + 1) return false;
    for (std::size_t i = 1; i < f.size(); ++i) {
      if (!Number(f[i])) return false;
    }
    return true;
  }

  bool Save(const Fields&) {
    saved_ = settings_;
    return true;
  }

  bool Reset(const Fields& f) {
    if (!f[1].empty() && !Whole(f[1], 0, 60)) return false;
    Reboot(Settings(saved_), 5);
    return true;
  }

  std::vector<Observation> Observe(const Epoch& e) const {
    return world_.Observe(e.seconds, settings_.elevation_mask, 12);
  }

  std::string ChangedEphemerides(const Epoch& e, EphemerisNews& told,
                                 std::string (*log)(const GpsTime& time, const Ephemeris& ephemeris)) const {
    std::string logs;
    for (const Ephemeris& news : told.Take(world_, e.seconds, e.views)) logs += log(e.truth.time, news);
    return logs;
  }

  std::string ChangedAlmanac(const Epoch& e) {
    const auto news = almanac_.Take(world_, e.seconds, e.views);
    return news.empty() ? "" : AlmanacLog(e.truth.time, news);
  }

  EphemerisNews ephemerides_, raw_ephemerides_, almanac_;
  std::string log_once_;  // answers the command at hand
};

}  // namespace

std::unique_ptr<Receiver> MakeGsr2650(const Options& options, const Model& model) {
  return std::make_unique<Gsr2650>(options, model);
}

}  // namespace simulator
