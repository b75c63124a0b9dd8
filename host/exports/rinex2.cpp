#include <algorithm>
#include <iterator>
#include <string_view>

#include "gpsengine/face/words.h"
#include "host/exports/rinexformat.h"
#include "host/exports/rinextext.h"

namespace host {

namespace {

// The columns: a code, its phase, Doppler and strength for each frequency. A satellite takes as many lines as
// there are fives of them, so that none can be added once there is an epoch.
constexpr std::array<const char*, 4> kColumns2[] = {
    {"C1", "L1", "D1", "S1"}, {"P2", "L2", "D2", "S2"}, {"C5", "L5", "D5", "S5"}};
constexpr std::size_t kFrequencies = std::size(kColumns2);

/// The signals that this version has a name for, and their frequency among the columns. Where two would take
/// the same columns, the one that stands first here is taken.
struct Signal2 {
  char system;
  std::string_view code;
  std::size_t frequency;
};
constexpr Signal2 kSignals2[] = {
    {'G', "1C", 0}, {'G', "2W", 1}, {'G', "2P", 1}, {'G', "5Q", 2}, {'R', "1C", 0}, {'R', "2P", 1},
    {'E', "1C", 0}, {'E', "1B", 0}, {'E', "5Q", 2}, {'S', "1C", 0}, {'S', "5I", 2},
};

const Signal2* FindSignal2(const rawdata::SignalObservation& signal) {
  const auto* const found = std::find_if(std::begin(kSignals2), std::end(kSignals2), [&](const Signal2& s) {
    return s.system == signal.system && s.code == signal.code;
  });
  return found == std::end(kSignals2) ? nullptr : found;
}

/// What a satellite has in each frequency's columns.
struct Row2 {
  const rawdata::SignalObservation* first;  // of the satellite
  std::array<const rawdata::SignalObservation*, kFrequencies> signals{};
  std::array<const Signal2*, kFrequencies> known{};
};

class Rinex2 : public RinexFormat {
 public:
  explicit Rinex2(const RinexKind& kind)
      : kind_(kind), frequencies_(kind.more_than_l1_ca ? kFrequencies : 1) {}

  bool Learn(const SignalList& signals) override;
  std::string Header(const RinexStation& station) const override;
  void Append(std::string& text, const GpsTime& time, const SignalList& signals) const override;

 private:
  std::vector<Row2> RowsOf(const SignalList& signals) const;
  void AppendRow(std::string& text, const Row2& row) const;

  const RinexKind kind_;
  const std::size_t frequencies_;
  std::string systems_;  // that have come
};

bool Rinex2::Learn(const SignalList& signals) {
  const std::size_t before = systems_.size();
  for (const auto& signal : signals) {
    if (FindSignal2(signal) != nullptr && systems_.find(signal.system) == std::string::npos)
      systems_ += signal.system;
  }
  return systems_.size() > before;
}

std::string Rinex2::Header(const RinexStation& station) const {
  constexpr std::size_t kTypesOfLine = 9;
  std::string header = FileBeginning(2.11, ObservationKind(systems_)) + StationLines(station);
  header += HeaderLine(kind_.more_than_l1_ca ? "     1     1" : "     1     0", "WAVELENGTH FACT L1/2");
  std::string line;
  std::size_t types = 0;
  line += Print("%6zu", frequencies_ * kColumns2[0].size());
  for (std::size_t f = 0; f < frequencies_; ++f) {
    for (const char* type : kColumns2[f]) {
      if (types > 0 && types % kTypesOfLine == 0) {
        header += HeaderLine(line, "# / TYPES OF OBSERV");
        line.assign(6, ' ');
      }
      line += Print("    %s", type);
      ++types;
    }
  }
  return header + HeaderLine(line, "# / TYPES OF OBSERV") + TimeLines(station) +
         HeaderLine("", "END OF HEADER");
}

std::vector<Row2> Rinex2::RowsOf(const SignalList& signals) const {
  std::vector<Row2> rows;
  for (const auto* signal : BySatellite(signals)) {
    const Signal2* const known = FindSignal2(*signal);
    if (known == nullptr || known->frequency >= frequencies_) continue;
    const bool is_new = rows.empty() || rows.back().first->system != signal->system ||
                        rows.back().first->satellite != signal->satellite;
    if (is_new) rows.push_back({signal});
    Row2& row = rows.back();
    if (row.known[known->frequency] != nullptr && row.known[known->frequency] < known) continue;
    row.known[known->frequency] = known;
    row.signals[known->frequency] = signal;
  }
  return rows;
}

void Rinex2::AppendRow(std::string& text, const Row2& row) const {
  constexpr std::size_t kOfLine = 5;
  std::size_t column = 0;
  const auto append = [&](double value, const rawdata::SignalObservation& signal, bool is_phase, bool has) {
    if (column > 0 && column % kOfLine == 0) text += '\n';
    ++column;
    AppendMeasurement(text, value);
    has&& value != 0.0 ? AppendIndicators(text, signal, kind_, is_phase) : (void)text.append(2, ' ');
  };
  for (std::size_t f = 0; f < frequencies_; ++f) {
    if (const auto* s = row.signals[f]) {
      append(s->pseudorange, *s, false, true);
      append(s->carrier_phase, *s, true, true);
      append(s->doppler, *s, false, false);
      append(s->cn0, *s, false, false);
      continue;
    }
    for (std::size_t i = 0; i < kColumns2[f].size(); ++i, ++column) {
      if (column > 0 && column % kOfLine == 0) text += '\n';
      text.append(kObservationColumns, ' ');
    }
  }
  text += '\n';
}

void Rinex2::Append(std::string& text, const GpsTime& time, const SignalList& signals) const {
  constexpr std::size_t kOfLine = 12;
  const std::vector<Row2> rows = RowsOf(signals);
  if (rows.empty()) return;
  const Calendar c = CalendarOf(time, 7);
  text += Print(" %02d %2d %2d %2d %2d%11.7f  0%3zu", c.year % 100, c.month, c.day, c.hour, c.minute,
                c.second, rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i > 0 && i % kOfLine == 0) text += Print("\n%32s", "");
    text += Print("%c%02d", rows[i].first->system, rows[i].first->satellite);
  }
  text += '\n';
  for (const Row2& row : rows) AppendRow(text, row);
}

}  // namespace

std::unique_ptr<RinexFormat> MakeRinex2(const RinexKind& kind) {
  return std::make_unique<Rinex2>(kind);
}

}  // namespace host
