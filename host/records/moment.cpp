#include "host/records/moment.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

namespace host {

namespace {

// The longest sentence of the standard, line end included.
constexpr std::size_t kLongestSentence = 82;

void AppendDigits(std::string& out, int value, int width) {
  for (int power = width == 4 ? 1000 : width == 3 ? 100 : 10; power > 0; power /= 10) {
    out += static_cast<char>('0' + value / power % 10);
  }
}

bool IsChecksumGood(std::string_view sentence) {
  const auto star = sentence.find('*');
  if (star == std::string_view::npos || star + 3 > sentence.size()) return false;
  unsigned sum = 0;
  for (const char c : sentence.substr(1, star - 1)) sum ^= static_cast<unsigned char>(c);
  unsigned stated = 0;
  const char* digits = sentence.data() + star + 1;
  return std::from_chars(digits, digits + 2, stated, 16).ptr == digits + 2 && sum == stated;
}

int Number(std::string_view digits) {
  int value = -1;
  const auto end = digits.data() + digits.size();
  return std::from_chars(digits.data(), end, value).ptr == end ? value : -1;
}

std::optional<Moment> MomentOf(int year, int month, int day, std::string_view time) {
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (year < 1980 || !date.ok() || time.size() < 6) return std::nullopt;
  const int hours = Number(time.substr(0, 2)), minutes = Number(time.substr(2, 2)),
            seconds = Number(time.substr(4, 2));
  if (hours < 0 || minutes < 0 || seconds < 0) return std::nullopt;
  const Moment days = std::chrono::sys_days(date).time_since_epoch().count();
  return days * kDay + ((hours * 60LL + minutes) * 60 + seconds) * 1000;
}

std::optional<Moment> MomentOfRmc(std::string_view sentence) {
  const auto date = FieldOf(sentence, 9);
  if (date.size() != 6) return std::nullopt;
  const int year = Number(date.substr(4));
  return MomentOf(year + (year < 80 ? 2000 : 1900), Number(date.substr(2, 2)), Number(date.substr(0, 2)),
                  FieldOf(sentence, 1));
}

std::optional<Moment> MomentOfZda(std::string_view sentence) {
  return MomentOf(Number(FieldOf(sentence, 4)), Number(FieldOf(sentence, 3)), Number(FieldOf(sentence, 2)),
                  FieldOf(sentence, 1));
}

}  // namespace

std::string_view FieldOf(std::string_view sentence, int number) {
  for (; number > 0; --number) {
    const auto comma = sentence.find(',');
    if (comma == std::string_view::npos) return {};
    sentence.remove_prefix(comma + 1);
  }
  return sentence.substr(0, sentence.find_first_of(",*"));
}

Moment DateTimeOfDay(double seconds_of_day, Moment near) {
  const Moment time = std::llround(seconds_of_day * 1000.0);
  // Midnight lies as near to the noon of one day as to that of another: it begins its day.
  const auto days =
      std::chrono::floor<std::chrono::days>(std::chrono::milliseconds(near - time + kDay / 2 - 1));
  return days.count() * kDay + time;
}

void AppendIso(std::string& out, Moment moment) {
  const auto time = std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(moment));
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const auto ms = static_cast<int>((time - day).count());
  AppendDigits(out, static_cast<int>(date.year()), 4);
  out += '-';
  AppendDigits(out, static_cast<int>(static_cast<unsigned>(date.month())), 2);
  out += '-';
  AppendDigits(out, static_cast<int>(static_cast<unsigned>(date.day())), 2);
  out += 'T';
  AppendDigits(out, ms / 3'600'000, 2);
  out += ':';
  AppendDigits(out, ms / 60'000 % 60, 2);
  out += ':';
  AppendDigits(out, ms / 1000 % 60, 2);
  out += '.';
  AppendDigits(out, ms % 1000, 3);
  out += 'Z';
}

std::optional<double> TimeOfDayOf(std::string_view line) {
  constexpr struct {
    std::string_view kind;
    int field;
  } kSentences[] = {{"GGA", 1}, {"RMC", 1}, {"ZDA", 1}, {"GNS", 1}, {"GLL", 5}};
  const auto start = line.rfind('$');
  if (start == std::string_view::npos) return std::nullopt;
  const auto sentence = line.substr(start);
  const auto tag = sentence.substr(0, sentence.find(','));
  for (const auto& [kind, field] : kSentences) {
    if (!tag.ends_with(kind)) continue;
    double time = 0.0;
    const auto text = FieldOf(sentence, field);
    const char* const end = text.data() + text.size();
    if (text.size() < 6 || std::from_chars(text.data(), end, time).ptr != end) return std::nullopt;
    if (!(time >= 0.0 && time < 240'000.0) || !IsChecksumGood(sentence)) return std::nullopt;
    const int whole = static_cast<int>(time);
    return whole / 10'000 * 3600 + whole / 100 % 100 * 60 + whole % 100 + (time - whole);
  }
  return std::nullopt;
}

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
      FeedSentence(piece);
    } else {
      if (head_.size() + piece.size() <= kLongestSentence) head_ += piece;
      if (end == std::string_view::npos) return;
      FeedSentence(head_);
      head_.clear();
    }
    bytes.remove_prefix(end);
  }
}

void DateScan::FeedSentence(std::string_view sentence) {
  const auto kind = sentence.substr(0, 6);
  const bool is_rmc = kind.ends_with("RMC");
  if ((!is_rmc && !kind.ends_with("ZDA")) || !IsChecksumGood(sentence)) return;
  // A receiver without a fix may keep its date by a clock of its own, or have none yet.
  const bool has_fix = !is_rmc || FieldOf(sentence, 2) == "A";
  if (had_fix_ && !has_fix) return;
  const auto moment = is_rmc ? MomentOfRmc(sentence) : MomentOfZda(sentence);
  if (!moment) return;
  latest_ = moment;
  had_fix_ = has_fix;
}

}  // namespace host
