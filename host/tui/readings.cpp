#include "host/tui/readings.h"

#include <algorithm>
#include <cmath>

#include "gpsengine/platform/clock.h"
#include "host/records/units.h"
#include "host/sentences/positiontail.h"

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

bool Readings::OnData(const CGPSData& data) {
  ++version_;
  if (data.m_bPositionValid) TakeFix(data);
  if (data.m_bDOPValid) dops_ = {data.m_dHDOP, data.m_dPDOP, data.m_dVDOP};
  // A receiver that has sentences of its own sends them with every fix: too many to tell of.
  const bool reports = data.m_Status.m_bStatusUpdated && reports_.OnData(data);
  if (reports) LogReports();
  return reports || data.m_bPositionValid;
}

void Readings::TakeFix(const CGPSData& data) {
  const auto now = now_();
  if (position_at_) interval_ = now - *position_at_;
  position_at_ = now;
  signal_ = data.m_nSignalType;
  if (HasTimeOfDay(data)) time_of_day_ = data.m_dTimeOfDay;
  used_ = sky_.UsedBy(data.m_nSatellitesUsed);
  const PositionEpoch epoch = epochs_.Read(data);
  if (epoch.time) time_ = epoch.time;
  if (epoch.fix && epoch.time && !epoch.repeats) survey_.Add(epoch);
  if (data.m_nSignalType == UDF_SIGNAL_NONE) return;
  fix_ = data;
  fix_at_ = now;
  if (!data.m_bVelocityValid) return;
  speed_ = data.m_dSpeed;
  course_.reset();  // a receiver at rest has none
  if (data.m_dSpeed > 0.0) course_ = CourseOf(data);
}

bool Readings::OnSky(const Sky& sky) {
  ++version_;
  sky_ = sky;
  used_ = sky_.UsedBy(used_);
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
  ++raw_epochs_;
  return true;
}

bool Readings::OnEphemeris(const CGPSDataEphemeris&) {
  ++version_;
  ++ephemerides_;
  return true;
}

bool Readings::OnBin(const Block& block) {
  ++version_;
  ++bins_;
  raw_epochs_ += block.epoch != nullptr ? 1 : 0;
  ephemerides_ += block.ephemeris != nullptr ? 1 : 0;
  return false;
}

bool Readings::OnString(const CString& text) {
  ++version_;
  std::string bytes;
  if (text.ToBytes(bytes)) {
    bytes.erase(bytes.find_last_not_of("\r\n") + 1);
    Keep(sentences_, Plain(bytes));
    if (const auto tail = PositionTailOf(bytes)) separation_ = tail->separation;
  }
  return shows_answers_ && reports_.OnString(text) && LogReports();
}

void Readings::SetReference(std::optional<Moment> reference) {
  dated_ = dated_ || reference;
  epochs_.SetReference(reference);
}

void Readings::Log(const std::string& text, Style style) {
  ++version_;
  Keep(log_, LogLine{CurrentClock().UnixSeconds(), style, text});
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
