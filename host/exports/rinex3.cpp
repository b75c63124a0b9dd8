#include <algorithm>
#include <map>
#include <string_view>

#include "gpsengine/face/words.h"
#include "host/exports/rinexformat.h"
#include "host/exports/rinextext.h"

namespace host {

namespace {

constexpr std::size_t kTypesOfLine3 = 13, kSlotsOfLine3 = 8;

constexpr std::size_t LinesFor(std::size_t count, std::size_t of_line) {
  return (count + of_line - 1) / of_line;
}

/// The lines of a header in which it says what has come: as many as all signals of all systems that a
/// receiver is known to send can take.
std::size_t RoomFor(const RinexKind& kind) {
  constexpr std::size_t kAll = 25, kOfSystem = 2;
  return kind.more_than_l1_ca ? kAll : kind.systems * kOfSystem;
}

/// A system with the codes of its signals, in the order in which they have come. An observation that stands
/// after the end of a line counts as blank, so that a code more leaves the lines before it as they are.
struct System3 {
  char letter;
  std::vector<std::string> codes;
};

class Rinex3 : public RinexFormat {
 public:
  explicit Rinex3(const RinexKind& kind)
      : kind_(kind), room_(RoomFor(kind)), types_(kind.in_decibels ? 4 : 3) {}

  bool Learn(const SignalList& signals) override;
  std::string Header(const RinexStation& station) const override;
  void Append(std::string& text, const GpsTime& time, const SignalList& signals) const override;

 private:
  using Observed = const rawdata::SignalObservation*;

  bool LearnCode(const rawdata::SignalObservation& signal);
  bool LearnChannel(const rawdata::SignalObservation& signal);
  std::size_t LinesUsed() const;
  const System3* Find(char letter) const;
  std::string CodeLines(const System3& system) const;
  std::string GlonassLines() const;
  void AppendRow(std::string& text, const System3& system, const Observed* from, const Observed* to) const;

  const RinexKind kind_;
  const std::size_t room_, types_;
  std::vector<System3> systems_;
  std::map<int, int> channels_;  // of GLONASS, by slot
};

const System3* Rinex3::Find(char letter) const {
  const auto found = std::find_if(systems_.begin(), systems_.end(),
                                  [&](const System3& system) { return system.letter == letter; });
  return found == systems_.end() ? nullptr : &*found;
}

std::size_t Rinex3::LinesUsed() const {
  std::size_t lines = 0;
  for (const System3& system : systems_) lines += LinesFor(system.codes.size() * types_, kTypesOfLine3) + 1;
  if (Find('R') != nullptr) lines += std::max<std::size_t>(1, LinesFor(channels_.size(), kSlotsOfLine3)) + 1;
  return lines;
}

/// What the header has no room for stays out of the file: more than is known to be sent.
bool Rinex3::LearnCode(const rawdata::SignalObservation& signal) {
  const System3* const known = Find(signal.system);
  if (known != nullptr &&
      std::ranges::find(known->codes, std::string_view(signal.code)) != known->codes.end())
    return false;
  const std::vector<System3> before = systems_;
  if (known == nullptr) systems_.push_back({signal.system, {}});
  systems_[known == nullptr ? before.size() : static_cast<std::size_t>(known - systems_.data())]
      .codes.emplace_back(signal.code);
  if (LinesUsed() <= room_) return true;
  systems_ = before;
  return false;
}

bool Rinex3::LearnChannel(const rawdata::SignalObservation& signal) {
  if (signal.system != 'R' || !signal.glonass_channel || Find('R') == nullptr) return false;
  const auto [slot, is_new] = channels_.try_emplace(signal.satellite, *signal.glonass_channel);
  if (is_new && LinesUsed() > room_) {
    channels_.erase(slot);
    return false;
  }
  return is_new;
}

bool Rinex3::Learn(const SignalList& signals) {
  bool changed = false;
  for (const auto& signal : signals) {
    changed |= LearnCode(signal);
    changed |= LearnChannel(signal);
  }
  return changed;
}

std::string Rinex3::CodeLines(const System3& system) const {
  std::string lines, line;
  line += Print("%c  %3zu", system.letter, system.codes.size() * types_);
  std::size_t count = 0;
  for (const std::string& code : system.codes) {
    for (const char type : std::string_view("CLDS").substr(0, types_)) {
      if (count > 0 && count % kTypesOfLine3 == 0) {
        lines += HeaderLine(line, "SYS / # / OBS TYPES");
        line.assign(6, ' ');
      }
      line += Print(" %c%s", type, code.c_str());
      ++count;
    }
  }
  return lines + HeaderLine(line, "SYS / # / OBS TYPES");
}

std::string Rinex3::GlonassLines() const {
  if (Find('R') == nullptr) return {};
  std::string lines, line;
  line += Print("%3zu ", channels_.size());
  std::size_t count = 0;
  for (const auto& [slot, channel] : channels_) {
    if (count > 0 && count % kSlotsOfLine3 == 0) {
      lines += HeaderLine(line, "GLONASS SLOT / FRQ #");
      line.assign(4, ' ');
    }
    line += Print("R%02d %2d ", slot, channel);
    ++count;
  }
  // Blank: the receiver does not say how its codes and phases are aligned.
  return lines + HeaderLine(line, "GLONASS SLOT / FRQ #") + HeaderLine("", "GLONASS COD/PHS/BIS");
}

std::string Rinex3::Header(const RinexStation& station) const {
  std::string letters;
  for (const System3& system : systems_) letters += system.letter;
  std::string header = FileBeginning(3.04, ObservationKind(letters)) + StationLines(station);
  if (kind_.in_decibels) header += HeaderLine("DBHZ", "SIGNAL STRENGTH UNIT");
  for (const System3& system : systems_) header += CodeLines(system);
  header += TimeLines(station);
  // Without a code: nor does it say whether its phases have been shifted to agree.
  for (const System3& system : systems_)
    header += HeaderLine(std::string(1, system.letter), "SYS / PHASE SHIFT");
  header += GlonassLines();
  for (std::size_t i = LinesUsed(); i < room_; ++i) header += HeaderLine("", "COMMENT");
  return header + HeaderLine("", "END OF HEADER");
}

void Rinex3::AppendRow(std::string& text, const System3& system, const Observed* from,
                       const Observed* to) const {
  text += Print("%c%02d", system.letter, (*from)->satellite);
  for (const std::string& code : system.codes) {
    const auto* const found =
        std::find_if(from, to, [&](Observed signal) { return std::string_view(signal->code) == code; });
    if (found == to) {
      text.append(types_ * kObservationColumns, ' ');
      continue;
    }
    const auto& signal = **found;
    const double values[] = {signal.pseudorange, signal.carrier_phase, signal.doppler, signal.cn0};
    for (std::size_t i = 0; i < types_; ++i) {
      const bool indicated = i < 2 && values[i] != 0.0;
      AppendMeasurement(text, values[i]);
      indicated ? AppendIndicators(text, signal, kind_, i == 1) : (void)text.append(2, ' ');
    }
  }
  text.erase(text.find_last_not_of(' ') + 1);
  text += '\n';
}

void Rinex3::Append(std::string& text, const GpsTime& time, const SignalList& signals) const {
  auto sorted = BySatellite(signals);
  std::erase_if(sorted, [&](Observed signal) {
    const System3* const system = Find(signal->system);
    return system == nullptr ||
           std::ranges::find(system->codes, std::string_view(signal->code)) == system->codes.end();
  });
  if (sorted.empty()) return;
  std::string rows;
  std::size_t count = 0;
  const auto* const end = sorted.data() + sorted.size();
  for (const Observed* from = sorted.data(); from != end; ++count) {
    const auto* const to = std::find_if(from, end, [&](Observed signal) {
      return signal->system != (*from)->system || signal->satellite != (*from)->satellite;
    });
    AppendRow(rows, *Find((*from)->system), from, to);
    from = to;
  }
  const Calendar c = CalendarOf(time, 7);
  text += Print("> %04d %02d %02d %02d %02d%11.7f  0%3zu\n", c.year, c.month, c.day, c.hour, c.minute,
                c.second, count);
  text += rows;
}

}  // namespace

std::unique_ptr<RinexFormat> MakeRinex3(const RinexKind& kind) {
  return std::make_unique<Rinex3>(kind);
}

}  // namespace host
