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

/// What a live screen shows: the last of everything that the library has published, and when it came.
class Readings : public Sink {
 public:
  using Clock = std::chrono::steady_clock;
  using Now = std::function<Clock::time_point()>;

  /// A line of what has happened.
  struct LogLine {
    std::int64_t at;  ///< Seconds since 1970, UTC.
    Style style;
    std::string text;
  };

  explicit Readings(Now now = &Clock::now) : now_(std::move(now)) {}

  bool OnData(const Record& record) override;
  bool OnRawData(const CGPSDataRaw& epoch) override;
  bool OnEphemeris(const CGPSDataEphemeris& ephemeris) override;
  bool OnBin() override;
  bool OnString(const CString& text) override;
  bool WantsSky() const override { return true; }
  bool OnSky(const Sky& sky) override;
  void SetReference(std::optional<Moment> reference) override;

  /// Whether texts that look like answers are told of among the reports.
  void ShowAnswers(bool shows) { shows_answers_ = shows; }
  /// A line of the program's own among the reports.
  void Log(const std::string& text, Style style);

  /// A SignalType, of the last record with a position; none so far if there was no such record.
  std::optional<int> Signal() const { return signal_; }
  /// The last one; none so far if there was none.
  const std::optional<PositionEpoch>& Fix() const { return fix_; }
  /// Seconds since that record, or since the last record without a fix if none had one.
  std::optional<double> Age() const;
  /// Longer ago than this receiver leaves between its fixes.
  bool IsStale() const;
  /// Nothing was heard of a position for so long, whether or not it was a fix.
  bool IsSilent() const;
  /// Seconds of day of the last record that had a time.
  std::optional<double> TimeOfDay() const { return time_of_day_; }
  /// The moment of the last position that had a time, on a date that only SetReference makes sure of where a
  /// recording is played.
  std::optional<Moment> Time() const { return time_; }
  bool IsDated() const { return dated_; }
  /// Metres that the geoid lies above the ellipsoid, as the last GGA states.
  const std::optional<double>& Separation() const { return separation_; }
  /// Of all fixes since the start, or since it was begun anew.
  const Survey& GetSurvey() const { return survey_; }
  void BeginSurvey() { survey_.Clear(); }
  /// Metres a second, and the course over ground in degrees, of the last record that had them.
  std::optional<double> Speed() const { return speed_; }
  std::optional<double> Course() const { return course_; }
  struct Dilution {
    std::optional<double> hdop, pdop, vdop;
  };
  /// Of the last record that had some.
  const Dilution& Dops() const { return dops_; }
  /// Those in view, by system and number.
  const std::vector<Satellite>& Satellites() const { return sky_.satellites; }
  int SatellitesUsed() const { return used_; }
  int SatellitesInView() const { return sky_.in_view; }

  long long RawEpochs() const { return raw_epochs_; }
  long long Ephemerides() const { return ephemerides_; }
  long long Bins() const { return bins_; }

  /// The newest at the end; a few hundred at most.
  const std::deque<LogLine>& Lines() const { return log_; }
  const std::deque<std::string>& Sentences() const { return sentences_; }
  /// Counts everything that has come, so that one can tell whether there is something new.
  std::uint64_t Version() const { return version_; }

 private:
  void TakePosition(const PositionEpoch& epoch);
  bool LogReports();
  bool IsOld(const std::optional<Clock::time_point>& since) const;

  const Now now_;
  std::uint64_t version_ = 0;
  std::optional<int> signal_;
  std::optional<PositionEpoch> fix_;
  std::optional<Clock::time_point> fix_at_, position_at_;
  Clock::duration interval_{};  // between the last two records with a position
  std::optional<double> time_of_day_, speed_, course_;
  std::optional<Moment> time_;
  bool dated_ = false;
  std::optional<double> separation_;
  Survey survey_;
  Dilution dops_;
  Sky sky_;
  int used_ = 0;
  long long raw_epochs_ = 0, ephemerides_ = 0, bins_ = 0;
  std::deque<LogLine> log_;
  std::deque<std::string> sentences_;
  bool shows_answers_ = true;
  std::string report_text_;
  TextSink reports_{report_text_, TextSink::Shows::reports};
};

}  // namespace host
