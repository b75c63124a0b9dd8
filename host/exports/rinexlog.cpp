#include "host/exports/rinexlog.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include "host/records/units.h"

namespace host {

namespace {

// The pi of IS-GPS-200, by which a semicircle becomes radians.
constexpr double kGpsPi = 3.1415926535898;
// Less than this an epoch may come early and still be due: receivers step their clocks by a millisecond.
constexpr double kEarly = 0.02;

__attribute__((format(printf, 2, 3))) void Append(std::string& text, const char* format, ...) {
  std::array<char, 128> piece;
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(piece.data(), piece.size(), format, arguments);
  va_end(arguments);
  text.append(piece.data(),
              static_cast<std::size_t>(std::clamp(length, 0, static_cast<int>(piece.size()) - 1)));
}

/// A line of a header: 60 characters, and what they are.
std::string HeaderLine(std::string content, std::string_view label) {
  content.resize(60, ' ');
  std::string line = content.append(label);
  return line.append(label.size() < 20 ? 20 - label.size() : 0, ' ') + '\n';
}

std::string Beginning(std::string_view kind) {
  std::string version;
  Append(version, "%9.2f%11s%s", 2.11, "", std::string(kind).c_str());
  const std::time_t now = CTime::GetCurrentTime().GetTime();
  std::tm utc{};
  gmtime_r(&now, &utc);
  std::array<char, 32> date{};
  std::strftime(date.data(), date.size(), "%Y%m%d %H%M%S UTC", &utc);
  std::string program;
  Append(program, "%-20s%-20s%-20s", "gpsengine", "", date.data());
  return HeaderLine(version, "RINEX VERSION / TYPE") + HeaderLine(program, "PGM / RUN BY / DATE");
}

/// Earth-centred coordinates, in metres, of degrees and metres above the WGS 84 ellipsoid.
std::array<double, 3> Cartesian(double latitude, double longitude, double height) {
  constexpr double kAxis = 6378137.0, kFlattening = 1.0 / 298.257223563,
                   kE2 = kFlattening * (2.0 - kFlattening);
  const double phi = latitude / kDegrees, lambda = longitude / kDegrees;
  const double n = kAxis / std::sqrt(1.0 - kE2 * std::sin(phi) * std::sin(phi));
  return {(n + height) * std::cos(phi) * std::cos(lambda), (n + height) * std::cos(phi) * std::sin(lambda),
          (n * (1.0 - kE2) + height) * std::sin(phi)};
}

bool IsGps(int prn) {
  return prn >= 1 && prn <= 32;
}

/// One value of an observation: 14 columns, and two for a loss of lock and a signal strength, which nothing
/// reports. What does not fit is left out.
void AppendObservation(std::string& text, double value) {
  constexpr double kMost = 999'999'999.0;
  if (std::isfinite(value) && value != 0.0 && std::fabs(value) <= kMost) {
    Append(text, "%14.3f  ", value);
  } else {
    text.append(16, ' ');
  }
}

/// A number of a navigation file: 19 columns with a Fortran exponent.
void AppendTerm(std::string& text, double value) {
  std::string number;
  Append(number, "%19.12E", std::isfinite(value) ? value : 0.0);
  std::replace(number.begin(), number.end(), 'E', 'D');
  text += number;
}

void AppendTerms(std::string& text, std::initializer_list<double> values) {
  text += "   ";
  for (const double value : values) AppendTerm(text, value);
  text += '\n';
}

std::string EpochText(const CGPSDataRaw& epoch, const GpsTime& time) {
  std::string satellites, observations;
  int count = 0;
  for (int i = 0; i < epoch.GetNumSV(); ++i) {
    CGPSSatelliteDataRaw satellite;
    if (!epoch.GetSatelliteData(satellite, i) || !satellite.m_bValid || !IsGps(satellite.m_nPRN)) continue;
    ++count;
    Append(satellites, "G%02d", satellite.m_nPRN);
    AppendObservation(observations, satellite.m_dPseudorange);   // metres, as the record has it
    AppendObservation(observations, satellite.m_dCarrierPhase);  // cycles that grow with the range, likewise
    AppendObservation(observations, satellite.m_dDoppler);       // hertz, positive on approach, likewise
    AppendObservation(observations,
                      satellite.m_nSignalCount);  // in the receiver's own unit, as the format asks
    observations += '\n';
  }
  if (count == 0) return {};
  const Calendar c = CalendarOf(time, 7);
  std::string text;
  Append(text, " %02d %2d %2d %2d %2d%11.7f  0%3d", c.year % 100, c.month, c.day, c.hour, c.minute, c.second,
         count);
  return text + satellites + '\n' + observations;
}

/// Angles and their rates come in semicircles, as satellites broadcast them, and go out in radians. The
/// corrections are broadcast in radians and metres, all times in seconds.
std::string EphemerisText(const CGPSDataEphemeris& e, const GpsTime& toc, const GpsTime& toe, double sent) {
  const Calendar c = CalendarOf(toc, 1);
  std::string text;
  Append(text, "%2d %02d %2d %2d %2d %2d%5.1f", e.m_nPRN, c.year % 100, c.month, c.day, c.hour, c.minute,
         c.second);
  for (const double value : {e.m_dAf0, e.m_dAf1, e.m_dAf2}) AppendTerm(text, value);
  text += '\n';
  AppendTerms(text, {static_cast<double>(e.m_lAode), e.m_dCrs, e.m_dDeltaN * kGpsPi, e.m_dM0 * kGpsPi});
  AppendTerms(text, {e.m_dCuc, e.m_dEccentricity, e.m_dCus, e.m_dSqrtA});
  AppendTerms(text, {toe.seconds, e.m_dCic, e.m_dOmega0 * kGpsPi, e.m_dCis});
  AppendTerms(text, {e.m_dI0 * kGpsPi, e.m_dCrc, e.m_dOmega * kGpsPi, e.m_dOmegaDot * kGpsPi});
  AppendTerms(text, {e.m_dIDot * kGpsPi, 0.0, static_cast<double>(toe.week), 0.0});
  AppendTerms(text, {0.0, 0.0, e.m_dTgd, static_cast<double>(e.m_lAodc)});
  AppendTerms(text, {sent, 0.0});
  return text;
}

std::string NavigationHeader() {
  return Beginning("N: GPS NAV DATA") +
         HeaderLine("ACCURACY, HEALTH AND FIT INTERVAL ARE NOT KNOWN", "COMMENT") +
         HeaderLine("", "END OF HEADER");
}

bool IsFolder(const std::string& path) {
  struct stat about {};
  return stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode);
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

bool RinexLog::Open() {
  if (!IsReady()) return Fail("the settings of the log do not suffice");
  if (open_) return Fail("the log is open");
  last_.reset();
  known_.clear();
  epochs_ = 0;
  error_.Empty();
  open_ = true;
  // Whether the file can be made is to be known now, though it gets its header with the first epoch.
  CFileException failure;
  if (!observations_.Open(CString::FromUtf8(ObservationPath()).GetString(),
                          CFile::modeCreate | CFile::modeWrite, &failure)) {
    open_ = false;
    return Break("cannot write " + CString::FromUtf8(ObservationPath()) + ": " + failure.m_strReason);
  }
  SetTimeMark();
  return true;
}

void RinexLog::Close() {
  if (!open_) return;
  observations_.Close();
  navigation_.Close();
  open_ = false;
  if (epochs_ == 0) std::remove(ObservationPath().c_str());
}

GpsTime RinexLog::TimeOf(const CGPSDataRaw& epoch) const {
  int week = ResolveWeek(epoch.m_nGPSWeek, PivotFor(epoch.m_Time));
  if (pivot_ &&
      epoch.m_nGPSWeek >= kWeeksOfRound) {  // taken from the computer's clock, for want of an ephemeris
    const GpsTime pivot = GpsTimeOf(*pivot_);
    week = Near(pivot.week, epoch.m_dReceiverTime, pivot.seconds).week;
  }
  // The week is that of the last ephemeris, and so may be a week behind when a new one has just begun.
  GpsTime time{week, epoch.m_dReceiverTime};
  if (last_ && time - *last_ < -kSecondsOfWeek / 2 && last_->week - week <= 1) ++time.week;
  return time;
}

bool RinexLog::IsEpochDue(const CGPSDataRaw& epoch) const {
  if (!last_) return true;
  const double elapsed = TimeOf(epoch) - *last_;
  return elapsed >= m_dLogInterval - kEarly || elapsed < 0.0;
}

std::string RinexLog::ObservationHeader(const CGPSDataRaw& epoch) const {
  std::string header = Beginning("OBSERVATION DATA    G (GPS)");
  header += HeaderLine(GetFilename().Left(60).ToUtf8(), "MARKER NAME");
  header += HeaderLine("", "OBSERVER / AGENCY");
  std::string receiver;
  Append(receiver, "%-20s%-20.20s%-20s", "", model_.c_str(), "");
  header += HeaderLine(receiver, "REC # / TYPE / VERS");
  header += HeaderLine("", "ANT # / TYPE");
  std::string line;
  std::array<double, 3> place{};
  if (epoch.m_bPositionValid)
    place = Cartesian(epoch.m_dLatitude, epoch.m_dLongitude, epoch.m_dHeight - m_dAntennaHeight);
  for (const double x : place) Append(line, "%14.4f", std::isfinite(x) ? x : 0.0);
  header += HeaderLine(line, "APPROX POSITION XYZ");
  line.clear();
  Append(line, "%14.4f%14.4f%14.4f", m_dAntennaHeight, 0.0, 0.0);
  header += HeaderLine(line, "ANTENNA: DELTA H/E/N");
  header += HeaderLine("     1     0", "WAVELENGTH FACT L1/2");
  header += HeaderLine("     4    C1    L1    D1    S1", "# / TYPES OF OBSERV");
  const Calendar c = CalendarOf(TimeOf(epoch), 7);
  line.clear();
  Append(line, "%6d%6d%6d%6d%6d%13.7f%5s%3s", c.year, c.month, c.day, c.hour, c.minute, c.second, "", "GPS");
  header += HeaderLine(line, "TIME OF FIRST OBS");
  return header + HeaderLine("", "END OF HEADER");
}

bool RinexLog::WriteEpoch(const CGPSDataRaw& epoch) {
  if (!open_) return Fail("the log is not open");
  if (!(epoch.m_dReceiverTime >= 0.0 && epoch.m_dReceiverTime < kSecondsOfWeek)) {
    return Fail("the epoch has no time of the week");
  }
  const GpsTime time = TimeOf(epoch);
  const std::string text = EpochText(epoch, time);
  if (text.empty()) return Fail("the epoch has no GPS satellite");
  if (!Write(observations_, ObservationPath(), epochs_ == 0 ? ObservationHeader(epoch) + text : text))
    return false;
  last_ = time;
  ++epochs_;
  return true;
}

bool RinexLog::WriteEphemeris(const CGPSDataEphemeris& ephemeris) {
  if (!open_) return Fail("the log is not open");
  if (!IsGps(ephemeris.m_nPRN)) return Fail("the ephemeris is not that of a GPS satellite");
  const int week = ResolveWeek(ephemeris.m_nWeek, PivotFor(CTime::GetCurrentTime()));
  const GpsTime toe = Near(week, ephemeris.m_lToe, ephemeris.m_lTow);
  const GpsTime toc = Near(week, ephemeris.m_lToc, ephemeris.m_lTow);
  const GpsTime sent{week, static_cast<double>(ephemeris.m_lTow)};
  const std::pair key(static_cast<int>(ephemeris.m_nPRN),
                      toe.week * static_cast<long long>(kSecondsOfWeek) + ephemeris.m_lToe);
  if (known_.contains(key)) return true;
  std::string text = EphemerisText(ephemeris, toc, toe, sent - GpsTime{toe.week, 0.0});
  if (known_.empty()) {
    CFileException failure;
    if (!navigation_.Open(CString::FromUtf8(NavigationPath()).GetString(),
                          CFile::modeCreate | CFile::modeWrite, &failure)) {
      return Break("cannot write " + CString::FromUtf8(NavigationPath()) + ": " + failure.m_strReason);
    }
    text.insert(0, NavigationHeader());
  }
  if (!Write(navigation_, NavigationPath(), text)) return false;
  known_.insert(key);
  return true;
}

bool RinexLog::Write(CFile& file, const std::string& path, const std::string& text) {
  if (file.Write(text.data(), static_cast<UINT>(text.size()))) {
    error_.Empty();
    return true;
  }
  return Break("cannot write " + CString::FromUtf8(path) + ": " + std::strerror(errno));
}

bool RinexLog::Break(const CString& reason) {
  broken_ = true;
  return Fail(reason);
}

bool RinexLog::Fail(const CString& reason) {
  error_ = reason;
  return false;
}

}  // namespace host
