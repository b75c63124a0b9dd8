#include "gpsengine/sentences/datescan.h"

#include <chrono>
#include <utility>

#include "gpsengine/sentences/fields.h"

namespace gps {

namespace {

// Receivers send some that are longer than the 82 characters of the standard.
constexpr std::size_t kLongestSentence = 120;

std::optional<Time> MomentOf(std::optional<int> year, std::string_view month, std::string_view day,
                             std::string_view time) {
  const auto seconds = TimeOf(time);
  const auto month_number = WholeOf(month), day_number = WholeOf(day);
  if (!seconds || !year || !month_number || !day_number) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(*year),
                                         std::chrono::month(static_cast<unsigned>(*month_number)),
                                         std::chrono::day(static_cast<unsigned>(*day_number))};
  if (*year < 1980 || !date.ok()) return std::nullopt;
  return std::chrono::sys_days(date) + std::chrono::seconds(static_cast<int>(*seconds));
}

std::optional<Time> MomentOfRmc(const Fields& rmc) {
  const auto date = rmc[9];
  if (date.size() != 6) return std::nullopt;
  auto year = WholeOf(date.substr(4));
  if (year) *year += *year < 80 ? 2000 : 1900;
  return MomentOf(year, date.substr(2, 2), date.substr(0, 2), rmc[1]);
}

std::optional<Time> MomentOfZda(const Fields& zda) {
  return MomentOf(WholeOf(zda[4]), zda[3], zda[2], zda[1]);
}

}  // namespace

void DateScan::Feed(std::string_view bytes) {
  // Before a date with a fix none counts, and mostly there is one among the last lines.
  constexpr std::size_t kLastLines = 1024;
  if (bytes.size() > kLastLines) {
    std::string head = std::exchange(head_, {});
    if (Scan(bytes.substr(bytes.size() - kLastLines))) return;
    head_ = std::move(head);
  }
  if (!head_.empty()) {
    head_ += bytes.substr(0, kLongestSentence - head_.size());
    const bool is_all = Take(head_);
    ReadTaken();
    if (is_all) head_.clear();
  }
  Scan(bytes);
}

/// Whether there is a date with a fix.
bool DateScan::Scan(std::string_view bytes) {
  for (auto at = bytes.find('$'); at != std::string_view::npos; at = bytes.find('$', 1)) {
    bytes.remove_prefix(at);
    if (Take(bytes)) continue;
    head_ = bytes;
    break;
  }
  return ReadTaken();
}

/// Looks at what begins with a "$". False if that may be a sentence with a date and is not all there yet.
bool DateScan::Take(std::string_view bytes) {
  constexpr std::size_t kTag = 6, kChecksum = 3;
  const auto kind = bytes.substr(0, kTag);
  if (kind.size() == kTag && !kind.ends_with("RMC") && !kind.ends_with("ZDA")) return true;
  const auto star = bytes.substr(0, kLongestSentence - kChecksum + 1).find('*');
  if (star == std::string_view::npos || star + kChecksum > bytes.size()) {
    return bytes.size() >= kLongestSentence;
  }
  taken_.push_back(bytes.substr(0, star + kChecksum));
  return true;
}

/// From the last one back to one with a fix, before which none counts.
bool DateScan::ReadTaken() {
  bool is_dated = had_fix_;
  while (!taken_.empty()) {
    const Fields sentence(taken_.back());
    taken_.pop_back();
    const bool is_rmc = sentence.Is("RMC");
    if (!is_rmc && !sentence.Is("ZDA")) continue;
    // A receiver without a fix may keep its date by a clock of its own, or have none yet.
    const bool has_fix = !is_rmc || sentence[2] == "A";
    if (is_dated && !has_fix) continue;
    const auto moment = is_rmc ? MomentOfRmc(sentence) : MomentOfZda(sentence);
    if (!moment) continue;
    latest_ = moment;
    is_dated = true;
    if (!has_fix) continue;
    had_fix_ = true;
    taken_.clear();
    return true;
  }
  return false;
}

}  // namespace gps
