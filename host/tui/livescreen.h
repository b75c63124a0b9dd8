#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gpsengine/sentences/sentencefinder.h"
#include "host/run/pacing.h"
#include "host/session/session.h"
#include "host/tui/commandmenu.h"
#include "host/tui/dashboard.h"
#include "host/tui/readings.h"
#include "host/tui/terminal.h"

namespace host {

/// A run on the screen of a terminal, with the keys that belong to it. What the program complains of in the
/// meantime is shown there too.
class LiveScreen : public Outlet {
 public:
  using Clock = Readings::Clock;

  /// Made before the run begins. `readings` is where its records go. Both outlive the screen. Throws a
  /// Failure if the terminal has no screen.
  LiveScreen(Session& session, Readings& readings, const Display& display);
  ~LiveScreen() override { Close(); }
  LiveScreen(const LiveScreen&) = delete;
  LiveScreen& operator=(const LiveScreen&) = delete;

  /// Corrections are shown, of which that tells.
  void ShowCorrections(std::function<CorrectionStatus()> status) { corrections_ = std::move(status); }

  /// All of them: a GGA says more than its record does.
  bool WantsTexts() const override { return true; }
  void OnBytes(std::string_view bytes) override;
  void OnEvent(RunEvent event) override;
  Clock::time_point NextAt() const override;
  void AddWaits(std::vector<pollfd>& waits) override;
  void Handle(const std::vector<pollfd>& waits, std::size_t first) override;
  /// Handles keys, performs what they ask for and draws if it is time.
  void Step() override;
  bool IsDone() const override { return quit_; }

  /// From here to the end of the object's life the run is busy with a sequence of the library that blocks the
  /// calling thread. Its waits go on showing what comes, and it is stopped when the user wants
  /// that.
  class Busy {
   public:
    /// `time` is how long it takes, in milliseconds, as far as known.
    Busy(LiveScreen& screen, const std::string& label, long long time);
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

   private:
    LiveScreen& screen_;
    PacingClock::Sequence sequence_;
  };

 private:
  /// Gives the terminal back; complaints go to standard error again.
  void Close();
  void OnKey(int key);
  void NextAngles();
  void Perform(const CommandMenu::Order& order);
  bool OnPassed(long long passed);
  void TakeNotices();
  void Tell(const std::string& text, Style style);
  void Draw();

  Session& session_;
  Readings& readings_;
  CommandMenu menu_;
  long long start_time_;  // how long the start of the run takes, in milliseconds
  Terminal terminal_;
  View view_;
  bool silences_trace_ = false;
  bool quit_ = false, stop_ = false, help_ = false, dirty_ = true;
  std::uint64_t drawn_version_ = 0;
  Clock::time_point drawn_at_{};
  std::optional<Clock::time_point> status_until_, answers_until_;
  SentenceFinder answers_;
  std::function<CorrectionStatus()> corrections_;
  bool has_input_ = true;
  // The current sequence.
  std::string busy_;
  long long busy_time_ = 0, busy_passed_ = 0;
  std::optional<Busy> start_;
  // Complaints, which may come from the reader thread.
  std::mutex notices_mutex_;
  std::vector<std::string> notices_;
};

}  // namespace host
