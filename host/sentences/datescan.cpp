#include "host/sentences/datescan.h"

#include <chrono>

#include "host/sentences/fields.h"

namespace host {

namespace {

// The longest sentence of the standard, line end included.
constexpr std::size_t kLongestSentence = 82;

std::optional<Moment> MomentOf(std::optional<int> year, std::string_view month, std::string_view day,
                               std::string_view time) {
  const auto seconds = TimeOf(time);
  const auto month_number = WholeOf(month), day_number = WholeOf(day);
  if (!seconds || !year || !month_number || !day_number) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(*year),
                                         std::chrono::month(static_cast<unsigned>(*month_number)),
                                         std::chrono::day(static_cast<unsigned>(*day_number))};
  if (*year < 1980 || !date.ok()) return std::nullopt;
  const Moment days = std::chrono::sys_days(date).time_since_epoch().count();
  return days * kDay + static_cast<Moment>(*seconds) * 1000;
}

std::optional<Moment> MomentOfRmc(const Fields& rmc) {
  const auto date = rmc[9];
  if (date.size() != 6) return std::nullopt;
  auto year = WholeOf(date.substr(4));
  if (year) *year += *year < 80 ? 2000 : 1900;
  return MomentOf(year, date.substr(2, 2), date.substr(0, 2), rmc[1]);
}

std::optional<Moment> MomentOfZda(const Fields& zda) {
  return MomentOf(WholeOf(zda[4]), zda[3], zda[2], zda[1]);
}

}  // namespace

void DateScan::Feed(std::string_view bytes) {
  while (!bytes.empty()) {
    if (head_.empty()) {
      const auto start = bytes.find('$');
      if (start == std::string_view::npos) return;
      bytes.remove_prefix(start);
    }
    const auto end = bytes.find_first_of("\r\n");
    const auto piece = bytes.substr(0, end);
    if (end != std::string_view::npos && head_.empty()) {
      FeedLine(piece);
    } else {
      if (head_.size() + piece.size() <= kLongestSentence) head_ += piece;
      if (end == std::string_view::npos) return;
      FeedLine(head_);
      head_.clear();
    }
    bytes.remove_prefix(end);
  }
}

void DateScan::FeedLine(std::string_view line) {
  const auto kind = line.substr(line.rfind('$')).substr(0, 6);
  const bool is_rmc = kind.ends_with("RMC");
  if (!is_rmc && !kind.ends_with("ZDA")) return;
  const Fields sentence(line);
  // A receiver without a fix may keep its date by a clock of its own, or have none yet.
  const bool has_fix = !is_rmc || sentence[2] == "A";
  if (had_fix_ && !has_fix) return;
  const auto moment = is_rmc ? MomentOfRmc(sentence) : MomentOfZda(sentence);
  if (!moment) return;
  latest_ = moment;
  had_fix_ = has_fix;
}

}  // namespace host
