#include "host/tui/readings.h"

#include <algorithm>
#include <cmath>

#include "gpsengine/platform/clock.h"
#include "gpsengine/sentences/positiontail.h"
#include "host/run/face.h"

namespace host {

namespace {

constexpr std::size_t kLongestLog = 300;
constexpr auto kLeastPatience = std::chrono::seconds(3);
constexpr auto kMostPatience = std::chrono::seconds(60);

template <class T>
void Keep(std::deque<T>& lines, T line) {
  lines.push_back(std::move(line));
  if (lines.size() > kLongestLog) lines.pop_front();
}

}  // namespace

bool Readings::OnData(const Record& record) {
  ++version_;
  const PositionEpoch& epoch = record.epoch;
  if (record.data.m_bDOPValid) dops = {epoch.hdop, epoch.pdop, epoch.vdop};
  if (record.HasPosition()) TakePosition(epoch);
  // A receiver that has sentences of its own sends them with every fix: too many to tell of.
  const bool reports = record.data.m_Status.m_bStatusUpdated && reports_.OnData(record);
  if (reports) LogReports();
  return reports || record.HasPosition();
}

void Readings::TakePosition(const PositionEpoch& epoch) {
  const auto now = now_();
  if (position_at_) interval_ = now - *position_at_;
  position_at_ = now;
  signal = epoch.signal;
  used = sky.UsedBy(epoch.used);
  if (epoch.time) {
    time_of_day = epoch.time_of_day;
    time = epoch.time;
  }
  if (!epoch.valid) return;
  if (epoch.time && !epoch.repeats) survey.Add(epoch);
  fix = epoch;
  fix_at_ = now;
  if (!epoch.speed) return;
  speed = epoch.speed;
  course = epoch.course;  // a receiver at rest has none
}

bool Readings::OnSky(const Sky& news) {
  ++version_;
  sky = news;
  used = sky.UsedBy(used);
  return false;  // --count counts what the format "text" shows
}

bool Readings::LogReports() {
  if (report_text_.empty()) return false;
  std::string_view line = report_text_;
  line = line.substr(0, line.find('\n'));
  if (line.starts_with("report: ")) line.remove_prefix(8);
  Log(std::string(line), Style::normal);
  report_text_.clear();
  return true;
}

bool Readings::OnRawData(const CGPSDataRaw&) {
  ++version_;
  ++raw_epochs;
  return true;
}

bool Readings::OnEphemeris(const CGPSDataEphemeris&) {
  ++version_;
  ++ephemerides;
  return true;
}

bool Readings::OnBin(const Block& block) {
  ++version_;
  ++bins;
  raw_epochs += block.epoch != nullptr ? 1 : 0;
  ephemerides += block.ephemeris != nullptr ? 1 : 0;
  return false;
}

bool Readings::OnString(const CString& text) {
  ++version_;
  std::string bytes;
  if (text.ToBytes(bytes)) {
    bytes.erase(bytes.find_last_not_of("\r\n") + 1);
    Keep(sentences, Plain(bytes));
    if (const auto tail = PositionTailOf(bytes)) separation = tail->separation;
  }
  return shows_answers_ && reports_.OnString(text) && LogReports();
}

void Readings::SetReference(std::optional<Moment> reference) {
  dated = dated || reference;
}

void Readings::Log(const std::string& text, Style style) {
  ++version_;
  Keep(log, LogLine{CurrentClock().UnixSeconds(), style, text});
}

std::optional<double> Readings::Age() const {
  const auto& since = fix_at_ ? fix_at_ : position_at_;
  if (!since) return std::nullopt;
  return std::chrono::duration<double>(now_() - *since).count();
}

bool Readings::IsStale() const {
  return IsOld(fix_at_);
}

bool Readings::IsSilent() const {
  return IsOld(position_at_);
}

bool Readings::IsOld(const std::optional<Clock::time_point>& since) const {
  if (!since) return false;
  const Clock::duration patience =
      std::clamp<Clock::duration>(interval_ * 5 / 2, kLeastPatience, kMostPatience);
  return now_() - *since > patience;
}

}  // namespace host
