#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "host/records/epoch.h"
#include "host/records/sink.h"
#include "host/records/survey.h"
#include "host/records/textsink.h"
#include "host/tui/canvas.h"

namespace host {

/// What has come last of everything, as the screen shows it.
struct Latest {
  /// A line of what has happened.
  struct LogLine {
    std::int64_t at;  ///< Seconds since 1970, UTC.
    Style style;
    std::string text;
  };
  struct Dilution {
    std::optional<double> hdop, pdop, vdop;
  };

  std::optional<int> signal;  ///< A SignalType, of the last record with a position; none if there was none.
  std::optional<PositionEpoch> fix;   ///< The last one.
  std::optional<double> time_of_day;  ///< Seconds, of the last position that had a time.
  /// The moment of that, on a date that is sure only if `dated` where a recording is played.
  std::optional<Moment> time;
  bool dated = false;
  /// Metres that the geoid lies above the ellipsoid, as the last GGA states.
  std::optional<double> separation;
  Survey survey;                 ///< Of all fixes since the start, or since it was begun again.
  std::optional<double> speed;   ///< Metres a second, of the last fix that had one.
  std::optional<double> course;  ///< Degrees, likewise; none at rest.
  Dilution dops;                 ///< Of the last record that had some.
  Sky sky;
  int used = 0;  ///< Satellites.
  long long raw_epochs = 0, ephemerides = 0, bins = 0;
  std::deque<LogLine> log;            ///< The newest at the end; a few hundred at most.
  std::deque<std::string> sentences;  ///< Likewise.
};

/// Keeps what the library publishes for a live screen, and when it came.
class Readings : public Sink, public Latest {
 public:
  using Clock = std::chrono::steady_clock;
  using Now = std::function<Clock::time_point()>;

  explicit Readings(Now now = &Clock::now) : now_(std::move(now)) {}

  bool OnData(const Record& record) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin(const Block& block) override;
  bool OnString(const CString& text) override;
  bool WantsSky() const override { return true; }
  bool OnSky(const Sky& news) override;
  void SetReference(std::optional<Moment> reference) override;

  /// Whether texts that look like answers are told of among the reports.
  void ShowAnswers(bool shows) { shows_answers_ = shows; }
  /// A line of the program's own among the reports.
  void Log(const std::string& text, Style style);

  /// Seconds since the last fix, or since the last position if none was one.
  std::optional<double> Age() const;
  /// Longer ago than this receiver leaves between its fixes.
  bool IsStale() const;
  /// Nothing was heard of a position for so long, whether or not it was a fix.
  bool IsSilent() const;
  /// Counts everything that has come, so that one can tell whether there is something new.
  std::uint64_t Version() const { return version_; }

 private:
  void TakePosition(const PositionEpoch& epoch);
  bool LogReports();
  bool IsOld(const std::optional<Clock::time_point>& since) const;

  const Now now_;
  std::uint64_t version_ = 0;
  std::optional<Clock::time_point> fix_at_, position_at_;
  Clock::duration interval_{};  // between the last two records with a position
  bool shows_answers_ = true;
  std::string report_text_;
  TextSink reports_{report_text_, TextSink::Shows::reports};
};

}  // namespace host
