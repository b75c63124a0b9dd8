#include "host/exports/rinexlog.h"

#include <sys/stat.h>

#include <cmath>
#include <cstdio>

#include "gpsengine/face/block.h"
#include "host/exports/rinextext.h"

namespace host {

namespace {

// Less than this an epoch may come early and still be due: receivers step their clocks by a millisecond.
constexpr double kEarly = 0.02;
// What a receiver has of ephemerides before it knows the time.
constexpr std::size_t kMostWaiting = 64;

bool IsGps(int prn) {
  return prn >= 1 && prn <= 32;
}

bool IsFolder(const std::string& path) {
  struct stat about {};
  return stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode);
}

bool IsTimeOfWeek(double seconds) {
  return seconds >= 0.0 && seconds < kSecondsOfWeek;
}

std::tuple<char, int, std::string> NameOf(const rawdata::SignalObservation& signal) {
  return {signal.system, signal.satellite, signal.code};
}

}  // namespace

void RinexLog::SetBase(const std::string& base) {
  std::string path = base;
  if (!path.ends_with('/') && IsFolder(path)) path += '/';
  const auto slash = path.rfind('/');
  folder_ = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  const std::string name = path.substr(folder_.size());
  name.empty() ? SetDefaultFilename("gpsengine") : SetFilename(CString::FromUtf8(name));
}

std::string RinexLog::NavigationPath() const {
  const std::string path = ObservationPath();
  return path.substr(0, path.rfind('.')) + ".nav";
}

void RinexLog::SetPlace(double latitude, double longitude, double height) {
  if (has_place_ || !std::isfinite(latitude + longitude + height)) return;
  station_.place = Cartesian(latitude, longitude, height - m_dAntennaHeight);
  has_place_ = owes_place_ = true;
}

bool RinexLog::Open() {
  if (!IsReady()) return Fail("the settings of the log do not suffice");
  if (open_) return Fail("the log is open");
  last_.reset();
  known_.clear();
  waiting_.clear();
  slipped_.clear();
  format_.reset();
  epochs_ = 0;
  error_.Empty();
  // Made now, so that a bad path is told at once; the header comes with the first epoch.
  if (!observations_.Open(ObservationPath())) return Break(observations_);
  open_ = true;
  SetTimeMark();
  return true;
}

void RinexLog::Close() {
  if (!open_) return;
  WriteWaiting();
  observations_.Close();
  navigation_.Close();
  open_ = false;
  if (epochs_ == 0) std::remove(ObservationPath().c_str());
}

GpsTime RinexLog::TimeOf(const CGPSDataRaw& epoch) const {
  int week = ResolveWeek(epoch.m_nGPSWeek, PivotFor(epoch.m_Time));
  if (pivot_ && epoch.m_nGPSWeek >= kWeeksOfRound) {  // from the computer's clock, since no ephemeris told it
    const GpsTime pivot = GpsTimeOf(*pivot_);
    week = Near(pivot.week, epoch.m_dReceiverTime, pivot.seconds).week;
  }
  // The week is that of the last ephemeris, and so may be a week behind when a new one has just begun.
  GpsTime time{week, epoch.m_dReceiverTime};
  if (last_ && time - *last_ < -kSecondsOfWeek / 2 && last_->week - week <= 1) ++time.week;
  return time;
}

GpsTime RinexLog::TimeOf(const rawdata::ObservationEpoch& epoch) const {
  return {ResolveWeek(epoch.week, PivotFor(CTime::GetCurrentTime())), epoch.time_of_week};
}

// By whole intervals of the week, so that the logs of two receivers have the same epochs.
bool RinexLog::IsDue(const GpsTime& time) const {
  const auto interval_of = [this](const GpsTime& t) {
    return std::floor((t.week * kSecondsOfWeek + t.seconds + kEarly) / m_dLogInterval);
  };
  return !last_ || interval_of(time) != interval_of(*last_);
}

bool RinexLog::WriteEpoch(const CGPSDataRaw& epoch) {
  if (epoch.m_bPositionValid) SetPlace(epoch.m_dLatitude, epoch.m_dLongitude, epoch.m_dHeight);
  if (!IsTimeOfWeek(epoch.m_dReceiverTime)) return Fail("the epoch has no time of the week");
  return Write(TimeOf(epoch), SignalsOf(epoch), RinexKind());
}

bool RinexLog::WriteEpoch(const rawdata::ObservationEpoch& epoch, const RinexKind& kind) {
  if (!IsTimeOfWeek(epoch.time_of_week)) return Fail("the epoch has no time of the week");
  const GpsTime time = TimeOf(epoch);
  return slipped_.empty() ? Write(time, epoch.signals, kind) : Write(time, WithSlips(epoch.signals), kind);
}

void RinexLog::SkipEpoch(const rawdata::ObservationEpoch& epoch) {
  for (const auto& signal : epoch.signals) {
    if (signal.slip && signal.carrier_phase != 0.0) slipped_.insert(NameOf(signal));
  }
}

SignalList RinexLog::WithSlips(const SignalList& signals) {
  SignalList marked = signals;
  for (auto& signal : marked) {
    if (signal.carrier_phase != 0.0 && slipped_.erase(NameOf(signal)) > 0) signal.slip = true;
  }
  return marked;
}

bool RinexLog::Write(const GpsTime& time, const SignalList& signals, const RinexKind& kind) {
  if (!open_) return Fail("the log is not open");
  if (signals.empty()) return Fail("the epoch has no GPS satellite");
  if (!WriteHead(time, signals, kind)) return false;
  text_.clear();
  format_->Append(text_, time, signals);
  if (text_.empty()) return Fail("the epoch has no signal that the format has room for");
  if (!Append(observations_, text_)) return false;
  last_ = time;
  ++epochs_;
  return waiting_.empty() || WriteWaiting();
}

/// The header is there before the first epoch that needs it.
bool RinexLog::WriteHead(const GpsTime& time, const SignalList& signals, const RinexKind& kind) {
  const bool is_first = format_ == nullptr;
  if (is_first) {
    format_ = MakeRinex(version_, kind);
    station_.first = time;
    station_.antenna_height = m_dAntennaHeight;
    if (station_.marker.empty()) station_.marker = GetFilename().Left(60).ToUtf8();
  }
  const bool has_learned = format_->Learn(signals);
  if (!is_first && !has_learned && !owes_place_) return true;
  owes_place_ = false;
  const std::string head = format_->Header(station_);
  if (is_first) {
    head_ = head.size();
    return Append(observations_, head);
  }
  return head.size() == head_ && (observations_.ReplaceHead(head) || Break(observations_));
}

bool RinexLog::WriteEphemeris(const CGPSDataEphemeris& ephemeris) {
  rawdata::BroadcastEphemeris told;
  told.orbit = ephemeris;
  return Write(told, false);
}

bool RinexLog::Write(const rawdata::BroadcastEphemeris& told, bool has_state) {
  if (!open_) return Fail("the log is not open");
  const CGPSDataEphemeris& orbit = told.orbit;
  if (!IsGps(orbit.m_nPRN)) return Fail("the ephemeris is not that of a GPS satellite");
  if (has_state && orbit.m_nWeek < kWeeksOfRound && !last_ && !pivot_ && waiting_.size() < kMostWaiting) {
    waiting_.push_back({told, has_state});
    return true;
  }
  const Moment pivot = has_state && last_ ? MomentOf(*last_) : PivotFor(CTime::GetCurrentTime());
  const int week = ResolveWeek(orbit.m_nWeek, pivot);
  const GpsTime toe = Near(week, orbit.m_lToe, orbit.m_lTow);
  const GpsTime toc = Near(week, orbit.m_lToc, orbit.m_lTow);
  const GpsTime sent{week, static_cast<double>(orbit.m_lTow)};
  const std::tuple key(static_cast<int>(orbit.m_nPRN),
                       toe.week * static_cast<long long>(kSecondsOfWeek) + orbit.m_lToe, orbit.m_lAodc);
  if (known_.contains(key)) return true;
  const RinexEphemeris ephemeris{told, has_state, toc, toe, sent - GpsTime{toe.week, 0.0}};
  std::string text = NavigationRecord(version_, ephemeris);
  if (!navigation_.IsOpen()) {
    if (!navigation_.Open(NavigationPath())) return Break(navigation_);
    text.insert(0, NavigationHeader(version_, has_state));
  }
  if (!Append(navigation_, text)) return false;
  known_.insert(key);
  return true;
}

bool RinexLog::WriteWaiting() {
  bool written = true;
  while (!waiting_.empty()) {
    const Waiting next = waiting_.front();
    waiting_.erase(waiting_.begin());
    if (!last_) pivot_ = PivotFor(CTime::GetCurrentTime());  // no epoch has come to tell more
    written &= Write(next.ephemeris, next.has_state);
  }
  return written;
}

bool RinexLog::Append(RinexFile& file, const std::string& text) {
  if (!file.Append(text)) return Break(file);
  error_.Empty();
  return true;
}

bool RinexLog::Break(const RinexFile& file) {
  broken_ = true;
  return Fail(CString::FromUtf8(file.Error()));
}

bool RinexLog::Fail(const CString& reason) {
  error_ = reason;
  return false;
}

}  // namespace host
