#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "host/exports/export.h"
#include "host/exports/gga.h"
#include "host/records/fixkind.h"
#include "host/records/jsonwriter.h"
#include "host/records/units.h"

namespace host {

namespace {

void AppendDigits(std::string& out, long long value, int width) {
  const std::string digits = std::to_string(value);
  const auto wanted = static_cast<std::size_t>(width);
  out.append(digits.size() < wanted ? wanted - digits.size() : 0, '0') += digits;
}

/// Puts a sentence together: fields, then the checksum.
class Sentence {
 public:
  Sentence(std::string& out, std::string_view tag) : out_(out), start_(out.size() + 1) {
    (out_ += '$') += tag;
  }
  Sentence(const Sentence&) = delete;
  Sentence& operator=(const Sentence&) = delete;
  ~Sentence() {
    constexpr char kHex[] = "0123456789ABCDEF";
    unsigned sum = 0;
    for (std::size_t i = start_; i < out_.size(); ++i) sum ^= static_cast<unsigned char>(out_[i]);
    out_ += {'*', kHex[sum >> 4 & 15], kHex[sum & 15], '\r', '\n'};
  }

  Sentence& Empty() { return Text(""); }
  Sentence& Text(std::string_view text) {
    (out_ += ',') += text;
    return *this;
  }
  Sentence& Letter(char letter) { return Text({&letter, 1}); }
  Sentence& Digits(long long value, int width) {
    out_ += ',';
    AppendDigits(out_, value, width);
    return *this;
  }
  Sentence& Number(const std::optional<double>& value, int decimals) {
    out_ += ',';
    if (value) AppendFixed(out_, *value, decimals);
    return *this;
  }
  Sentence& TimeOfDay(Moment time) {
    const auto ms = (time - std::chrono::floor<std::chrono::days>(time)).count();
    Digits(ms / 3'600'000 * 10'000 + ms / 60'000 % 60 * 100 + ms / 1000 % 60, 6);
    out_ += '.';
    AppendDigits(out_, ms % 1000, 3);
    return *this;
  }
  /// Degrees as degrees and minutes, with seven decimals of a minute: a fifth of a millimetre.
  Sentence& Angle(double degrees, int width, char positive, char negative) {
    constexpr long long kMinute = 10'000'000;
    const long long ticks = std::llround(std::fabs(degrees) * 60.0 * kMinute);
    Digits(ticks / (60 * kMinute), width);
    AppendDigits(out_, ticks / kMinute % 60, 2);
    out_ += '.';
    AppendDigits(out_, ticks % kMinute, 7);
    return Letter(degrees < 0.0 ? negative : positive);
  }
  Sentence& Position(const PositionEpoch& epoch) {
    if (!epoch.valid) return Text(",,,");
    return Angle(epoch.latitude, 2, 'N', 'S').Angle(epoch.longitude, 3, 'E', 'W');
  }

 private:
  std::string& out_;
  const std::size_t start_;
};

void AppendDate(Sentence& sentence, Moment time) {
  const std::string iso = IsoText(time);
  sentence.Text(iso.substr(8, 2) + iso.substr(5, 2) + iso.substr(2, 2));
}

void AppendGga(std::string& out, const PositionEpoch& epoch) {
  Sentence gga(out, "GPGGA");
  gga.TimeOfDay(*epoch.time).Position(epoch).Letter(FixKindOf(epoch.signal).gga);
  gga.Digits(std::clamp(epoch.used, 0, 99), 2).Number(epoch.hdop, 2);
  const PositionEpoch none;
  const PositionEpoch& heights = epoch.valid ? epoch : none;
  gga.Number(heights.height_msl, 3).Text("M").Number(heights.tail.separation, 3).Text("M");
  gga.Text(epoch.tail.age).Text(epoch.tail.station);
}

class NmeaExport : public GrowingExport {
 public:
  explicit NmeaExport(const ExportPath& path) : GrowingExport(path) {}

  void OnEpoch(const PositionEpoch& epoch) override {
    AppendGga(Text(), epoch);
    AppendRmc(epoch);
    if (sky_) AppendSky(epoch);
  }
  void OnSky(const Sky& sky) override {
    if (sky.has_list) sky_ = sky;
  }

 private:
  using Satellites = std::vector<const Satellite*>;

  void AppendRmc(const PositionEpoch& epoch) {
    Sentence rmc(Text(), "GPRMC");
    rmc.TimeOfDay(*epoch.time).Letter(epoch.valid ? 'A' : 'V').Position(epoch);
    rmc.Number(epoch.speed ? std::optional(*epoch.speed * kKnots.per_metre) : std::nullopt, 3)
        .Number(epoch.course, 2);
    AppendDate(rmc, *epoch.time);
    rmc.Empty().Empty().Letter(FixKindOf(epoch.signal).rmc);
  }

  /// The systems that the sky has, in groups of those that share a talker.
  static std::vector<std::pair<const Constellation*, Satellites>> BySystem(const Sky& sky) {
    std::vector<std::pair<const Constellation*, Satellites>> groups;
    for (const Satellite& satellite : sky.satellites) {
      const Constellation* system = FindConstellation(satellite.id.system);
      if (system == nullptr || system->talker == "GP") system = FindConstellation(Gnss::gps);
      const auto same = [&](const auto& group) { return group.first == system; };
      auto group = std::find_if(groups.begin(), groups.end(), same);
      if (group == groups.end()) group = groups.insert(group, {system, {}});
      group->second.push_back(&satellite);
    }
    return groups;
  }

  void AppendSky(const PositionEpoch& epoch) {
    auto groups = BySystem(*sky_);
    if (groups.empty()) groups.push_back({FindConstellation(Gnss::gps), {}});
    for (const auto& [system, in_view] : groups) {
      Satellites used;
      std::copy_if(in_view.begin(), in_view.end(), std::back_inserter(used),
                   [](auto* one) { return one->used; });
      std::span<const Satellite* const> rest = used;
      do {
        const auto part = rest.first(std::min<std::size_t>(rest.size(), kSatelliteSlots));
        AppendGsa(epoch, part, groups.size() > 1 ? system : nullptr);
        rest = rest.subspan(part.size());
      } while (!rest.empty());
    }
    for (const auto& [system, in_view] : groups) AppendGsv(std::string(system->talker) + "GSV", in_view);
  }

  /// `system` is null where there is no other: it then has no need of a number.
  void AppendGsa(const PositionEpoch& epoch, std::span<const Satellite* const> used,
                 const Constellation* system) {
    Sentence gsa(Text(), system != nullptr ? "GNGSA" : "GPGSA");
    gsa.Letter('A').Letter(epoch.valid ? '3' : '1');
    for (const Satellite* satellite : used) gsa.Digits(satellite->id.SentenceNumber(), 2);
    for (auto fields = used.size(); fields < kSatelliteSlots; ++fields) gsa.Empty();
    gsa.Number(epoch.pdop, 2).Number(epoch.hdop, 2).Number(epoch.vdop, 2);
    if (system != nullptr) gsa.Digits(system->system_id, 1);
  }

  void AppendGsv(const std::string& tag, const Satellites& in_view) {
    constexpr std::size_t kPerSentence = 4;
    const std::size_t sentences = (in_view.size() + kPerSentence - 1) / kPerSentence;
    for (std::size_t i = 0; i < sentences; ++i) {
      Sentence gsv(Text(), tag);
      gsv.Digits(static_cast<int>(sentences), 1).Digits(static_cast<int>(i + 1), 1);
      gsv.Digits(static_cast<int>(in_view.size()), 2);
      const std::size_t end = std::min((i + 1) * kPerSentence, in_view.size());
      for (std::size_t j = i * kPerSentence; j < end; ++j) AppendSatellite(gsv, *in_view[j]);
    }
  }

  static void AppendSatellite(Sentence& gsv, const Satellite& satellite) {
    gsv.Digits(satellite.id.SentenceNumber(), 2);
    for (const auto& [value, width] :
         {std::pair(satellite.elevation, 2), {satellite.azimuth, 3}, {satellite.signal, 2}}) {
      value ? gsv.Digits(*value, width) : gsv.Empty();
    }
  }

  std::optional<Sky> sky_;
};

}  // namespace

std::string GgaOf(const PositionEpoch& epoch) {
  std::string text;
  if (epoch.time) AppendGga(text, epoch);
  return text;
}

std::unique_ptr<Export> MakeNmeaExport(const ExportPath& path, const RunFacts&) {
  return std::make_unique<NmeaExport>(path);
}

}  // namespace host
