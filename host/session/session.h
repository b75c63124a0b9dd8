#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gpsengine/engine/gpsengine.h"
#include "host/line/portsearch.h"
#include "host/records/hostwindow.h"
#include "host/records/units.h"
#include "host/run/boxes.h"
#include "host/run/failure.h"
#include "host/run/output.h"
#include "host/run/pacing.h"
#include "host/session/feed.h"
#include "host/session/outlet.h"
#include "host/session/reconnect.h"

namespace host {

/// What the user says of a run, whatever becomes of its bytes: a device to read, a recording to play instead,
/// or neither for a simulated receiver.
struct RunOptions : LineChoice {
  std::string play;
  Geoid geoid = Geoid::none;
  double antenna_height = 0.0;  ///< Metres.
  double duration = 0.0;        ///< Seconds to run; 0 for no limit.
  long long count = 0;          ///< Records to show; 0 for no limit.
  /// Wait for a port that is not there, looking for it so often; without it, the run ends.
  std::optional<std::chrono::milliseconds> reconnect;
};

/// What a command makes of a run.
struct RunRules {
  double silence =
      0.0;  ///< Seconds from the start within which a message must be understood; 0 for no limit.
  /// The run is about what the receiver sends, and fails if that is nothing; without it, that is worth a
  /// word. A run of a stated length goes on to its end when its line is lost.
  bool is_strict = false;
  /// The run follows a receiver: a lost port may be waited for, and port and model are remembered once
  /// something was understood, as the rate always is.
  bool follows = false;
  std::optional<bool> attach_raw;  ///< Decode raw data; without it, where the model has them.
  std::string label;   ///< What the start is called, for showing its progress; empty: it is not shown.
  long long time = 0;  ///< How long the start takes, in milliseconds.
  std::function<void(CGPSReceiver&)> on_open;  ///< What else the receiver is asked for, at every start.
};

/// A run: an engine, its receiver and where their bytes come from; the loop, and how it ends. What comes out
/// is the outlets'; their lines on the output are sent on their way whenever there is nothing else to do, and
/// the run ends once nobody reads them any more.
class Session {
 public:
  /// Selects the model. Throws a Failure if there is none of that name.
  Session(const RunOptions& options, const Interrupt& interrupt, Output& output);
  ~Session() { boxes_.Release(); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  CGPSEngine& Engine() { return engine_; }
  CGPSReceiver& Receiver() const { return receiver_; }
  /// The model by its own name.
  const RunOptions& Options() const { return options_; }
  const Interrupt& GetInterrupt() const { return interrupt_; }
  Boxes& GetBoxes() { return boxes_; }
  const HostWindow& Window() const { return window_; }

  /// Reads from there, and sets the receiver up for it.
  void Read(std::unique_ptr<Feed> feed);
  const Feed& GetFeed() const { return *feed_; }
  /// The outlets in the order in which they are told. They are not asked for anything after the run.
  void Add(Outlet& outlet);
  /// Runs until there is a reason to end. Throws a Failure if the run cannot begin or comes to nothing.
  ExitCode Run(RunRules rules);

  /// Passes on what has come, and sees to it that what the outlets want goes on coming.
  void PassOn();
  /// How many messages were understood.
  long long Understood() const;
  /// Some byte has come.
  bool HasHeard() const { return heard_; }
  /// The port is waited for.
  bool IsWaiting() const { return reconnect_ && reconnect_->IsWaiting(); }

 private:
  std::optional<ExitCode> Start();
  bool Open();
  bool PreparePort();
  void Tell(RunEvent event);
  void KeepCapturing();
  std::string PassBytes();
  void Wait();
  Deadline::Moment NextAt() const;
  void Step();
  void StepOutlets();
  std::optional<ExitCode> Ending();
  ExitCode Finish(ExitCode ending);
  void NoteUnderstood();
  void FollowLine();
  void WaitForPort();
  void Reopen();
  void CheckSilence();
  bool IsDone() const;
  void Judge() const;
  bool IsLost() const { return feed_->IsLost() || IsWaiting(); }
  Failure NothingUnderstood(double seconds) const;
  Failure PortLost() const;

  RunOptions options_;
  const Interrupt& interrupt_;
  Output& output_;
  RunRules rules_;
  std::vector<Outlet*> outlets_;
  // What the reader thread meets outlives the engine.
  Boxes boxes_;
  std::unique_ptr<Feed> feed_;
  CGPSEngine engine_;
  CGPSReceiver& receiver_;
  HostWindow window_;
  std::optional<Reconnect> reconnect_;
  bool heard_ = false, understood_ = false, is_read_ = true;
  long long understood_before_ = 0;  // before the line's last opening
  Deadline end_, silence_;
};

/// "10 s".
std::string Seconds(double seconds);

}  // namespace host
