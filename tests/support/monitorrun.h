#pragma once

#include "host/monitor.h"
#include "tests/support/pseudoterminal.h"
#include "tests/support/receivertest.h"

/// Runs on the test's thread, with what happens to them on another, and with a profile of their own.
class MonitorRun : public testing::Test {
 protected:
  MonitorRun() {
    app.SetProfilePath(CString::FromUtf8(folder / "host.ini"));
    EXPECT_EQ(pipe2(pipe, O_CLOEXEC), 0);
    std::signal(SIGPIPE, SIG_IGN);  // as the program does
    options.record = folder / "port.log";
    options.reconnect = std::chrono::milliseconds(20);
  }
  ~MonitorRun() override {
    CloseOutput();
    close(pipe[1]);
  }

  /// Nobody reads the output any more, which ends the run.
  void CloseOutput() {
    if (pipe[0] >= 0) close(std::exchange(pipe[0], -1));
  }
  /// What the run shows within that time; empty for nothing.
  std::string Shown(int ms) const {
    char piece[4096];
    pollfd source{pipe[0], POLLIN, 0};
    if (poll(&source, 1, ms) <= 0) return {};
    return {piece, static_cast<std::size_t>(std::max<ssize_t>(read(pipe[0], piece, sizeof piece), 0))};
  }
  /// Does so over and over until the run shows the fix of that second (FixAt).
  void UntilShown(int second, const std::function<void()>& send) const {
    const std::string time = "00:00:" + std::to_string(10 + second);
    for (std::string shown; shown.find(time) == shown.npos; shown += Shown(20)) send();
  }

  /// `run` takes an interrupt and an output.
  template <class Run>
  host::ExitCode Do(
      Run run, const std::function<void()>& story = [] {}) {
    const host::Interrupt interrupt;
    host::Output output(pipe[1]);
    const std::jthread teller(story);
    testing::internal::CaptureStderr();
    host::ExitCode code;
    std::string reason;
    try {
      code = run(interrupt, output);
    } catch (const host::Failure& failure) {
      code = failure.Code();
      reason = failure.what();
    }
    errors = testing::internal::GetCapturedStderr() + reason;
    return code;
  }
  host::ExitCode Run(const std::function<void()>& story) {
    return Do(
        [this](const auto& interrupt, auto& output) { return host::Monitor(options, interrupt, output); },
        story);
  }

  const TemporaryFolder folder;
  CWinApp app{"gpsengine-test"};
  host::MonitorOptions options;
  int pipe[2] = {-1, -1};
  std::string errors;  ///< What went to standard error, and why the run failed.
};

/// A run on a port under a name of its own, such as those of /dev/serial/by-id, that leads to a
/// pseudo-terminal.
class PluggedRun : public MonitorRun {
 protected:
  PluggedRun() {
    options.port = folder / "usb-receiver";
    Plug();
  }

  void Plug() {
    terminal = std::make_unique<PseudoTerminal>();
    std::filesystem::create_symlink(terminal->Name(), options.port);
  }
  void Unplug() {
    terminal->HangUp();
    std::filesystem::remove(options.port);
  }
  /// Sends a fix until the run shows it, since a port that is opened forgets what came before.
  void SendUntilShown(int second) {
    UntilShown(second, [&] { terminal->Exchange(FixAt(second)); });
  }

  std::unique_ptr<PseudoTerminal> terminal;
};
