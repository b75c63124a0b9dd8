#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "gpsengine/engine/gpsengine.h"
#include "host/line/wiretap.h"
#include "host/run/interrupt.h"
#include "host/run/pacing.h"
#include "host/tui/commandmenu.h"
#include "host/tui/dashboard.h"
#include "host/tui/readings.h"
#include "host/tui/terminal.h"

namespace host {

/// A run on the screen of a terminal, with the keys that belong to it. What the program complains of in the
/// meantime is shown there too. The loop that owns it waits on its descriptor and calls Step.
class LiveScreen {
 public:
  using Clock = Readings::Clock;

  /// Made before the port of the run is named and any thread starts. All that is handed over outlives the
  /// screen. Throws a Failure if the terminal has no screen.
  LiveScreen(Readings& readings, CGPSEngine& engine, CGPSReceiver& receiver, const Interrupt& interrupt);
  ~LiveScreen();
  LiveScreen(const LiveScreen&) = delete;
  LiveScreen& operator=(const LiveScreen&) = delete;

  /// Where the bytes come from, for the user.
  void SetSource(const std::string& source) { view_.source = source; }
  /// Takes the records that have come, during a command too.
  void OnDrain(std::function<void()> drain) { drain_ = std::move(drain); }
  /// The user wants to go on where a recording pauses.
  void OnEnter(std::function<void()> enter) { enter_ = std::move(enter); }

  /// Someone else needs the texts of messages all the time.
  void KeepTexts() { keeps_texts_ = true; }

  /// A copy of the bytes, for answers that are no messages. It may be missing.
  void ListenOn(WireTap& tap) { tap_ = &tap; }

  /// Readable when Step has something to do.
  int Descriptor() const { return terminal_.Descriptor(); }
  /// When Step is to be called at the latest.
  Clock::time_point NextDraw() const;
  /// Handles keys, performs what they ask for and draws if it is time.
  void Step();
  bool WantsToQuit() const { return quit_; }
  /// Gives the terminal back; complaints go to standard error again.
  void Close();

  /// From here to the end of the object's life the run is busy with a sequence of the library that blocks the
  /// calling thread. Its waits go on showing what comes, and throw PacingClock::Interrupted when the user
  /// stops it.
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

  /// How long the start of the run takes, in milliseconds.
  long long StartTime() const { return start_time_; }

 private:
  struct Notice {
    std::string text;
    Style style;
  };

  void OnKey(int key);
  bool OnMenuKey(int key);
  void NextPositionFormat();
  void Perform(const CommandMenu::Order& order);
  bool OnPassed(long long passed);
  void TakeNotices();
  void Tell(const std::string& text, Style style);
  void KeepCapturing();
  void Listen();
  void TakeParameterLines();
  void Draw();

  Readings& readings_;
  CGPSEngine& engine_;
  CGPSReceiver& receiver_;
  const Interrupt& interrupt_;
  CommandMenu menu_;
  long long start_time_;
  Terminal terminal_;
  View view_;
  std::function<void()> drain_, enter_;
  bool silences_trace_ = false;
  bool keeps_texts_ = false;
  bool quit_ = false, stop_ = false, help_ = false, dirty_ = true;
  std::uint64_t drawn_version_ = 0;
  Clock::time_point drawn_at_{};
  std::optional<Clock::time_point> status_until_, answers_until_;
  WireTap* tap_ = nullptr;
  bool taps_ = false;  // for an answer
  ParameterLines parameters_;
  std::size_t parameters_shown_ = 0;
  // The sequence at hand.
  std::string busy_;
  long long busy_time_ = 0, busy_passed_ = 0;
  // Complaints, which may come from the reader thread.
  std::mutex notices_mutex_;
  std::vector<std::string> notices_;
};

}  // namespace host
