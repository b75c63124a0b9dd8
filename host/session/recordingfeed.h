#pragma once

#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gpsengine/face/blockguard.h"
#include "gpsengine/face/pacer.h"
#include "gpsengine/face/unpacedclock.h"
#include "gpsengine/sentences/datescan.h"
#include "host/run/face.h"
#include "host/run/progress.h"
#include "host/run/recording.h"
#include "host/session/feed.h"

namespace host {

/// Recordings, or standard input, whose bytes the host moves, all of them and once, one recording after the
/// other, as fast as it goes.
class RecordingFeed : public Feed {
 public:
  /// There is a file; "-" is standard input. Throws a Failure that names the one that cannot be read.
  explicit RecordingFeed(const std::vector<std::string>& files);

  /// Bytes to hand over at a time.
  void SetChunk(int bytes) { chunk_ = static_cast<std::size_t>(bytes); }
  /// When it was made, if that is known; else whether anyone wants to know.
  void SetDate(std::optional<Moment> date, bool scans) {
    date_ = date;
    scans_ = scans && !date;
  }
  /// Shows on a terminal how far it has got, if that takes long.
  void ShowProgress(const std::string& label, bool output_is_busy);

  std::vector<std::string> Files() const override { return files_; }
  bool MovesBytes() const override { return true; }
  void Open(CGPSEngine& engine, HostWindow& window) override;
  void Step() override;
  void Decode(CGPSEngine& engine, std::string_view bytes) override;
  Deadline::Moment NextAt() const override { return {}; }  // at once
  bool IsAtEnd() const override { return at_end_; }
  void CheckUnderstood(const HostWindow& window) const override;
  std::string TakeBytes() override { return std::exchange(played_, {}); }

 protected:
  /// Takes up bytes, for whoever wants them and then for the engine.
  void Play(std::string_view bytes);

  Recording& Current() { return recordings_.front(); }

  bool at_end_ = false;

 private:
  void Date(std::string_view bytes);
  bool GoOn();

  const std::vector<std::string> files_;
  std::deque<Recording> recordings_;   // the one that plays, and those to come
  bool in_line_ = false;               // the last byte ended no line
  std::int64_t size_ = 0, done_ = 0;   // of all, and of those that have been played
  std::optional<UnpacedClock> clock_;  // while it plays: a rehearsal has one of its own
  std::size_t chunk_ = 4096;
  std::optional<Moment> date_;
  bool scans_ = true;
  HostWindow* window_ = nullptr;
  DateScan dates_;
  std::optional<Progress> progress_;
  std::string played_;
  BlockGuard guard_;
};

/// A recording at the pace of the times in it or a multiple of that. One without times goes at the pace of
/// its line.
class PacedFeed : public RecordingFeed {
 public:
  using Clock = Deadline::Clock;
  /// As fast as it goes.
  static constexpr double kMax = std::numeric_limits<double>::infinity();

  /// `speed` is a multiple of the recording's pace.
  PacedFeed(const std::string& file, double speed);

  void Open(CGPSEngine& engine, HostWindow& window) override;
  /// Plays what is due, some of it if that is much.
  void Step() override;
  Deadline::Moment NextAt() const override { return due_; }

 private:
  void ReadLine();

  const double speed_;
  std::optional<Pacer> pacer_;  // of one that has a pace
  std::string bytes_;           // read ahead
  std::size_t taken_ = 0;       // of them
  std::string line_;            // the next one to be played
  Clock::time_point due_;
};

}  // namespace host
