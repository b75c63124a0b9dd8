#include "host/monitor.h"

#include <memory>
#include <optional>

#include "host/commands/rawdata.h"
#include "host/session/fixage.h"
#include "host/tui/livescreen.h"

namespace host {

namespace {

void AskForRawData(CGPSReceiver& receiver, double interval) {
  if (receiver.EnablePostProcessing(true) && (interval <= 0.0 || SetRawInterval(receiver, interval))) return;
  throw Failure(ExitCode::refused, "the receiver did not take the command to send raw data" +
                                       (interval > 0.0 ? " every " + Seconds(interval) : std::string()));
}

RunRules RulesOf(const MonitorOptions& options, bool is_live) {
  RunRules rules;
  rules.is_strict = rules.follows = true;
  if (is_live) rules.silence = options.timeout;
  rules.attach_raw = options.attach_raw;
  if (options.rinex.base.empty()) return rules;
  rules.attach_raw = true;
  if (is_live) {
    rules.on_open = [interval = options.rinex.interval](CGPSReceiver& receiver) {
      AskForRawData(receiver, interval);
    };
  }
  return rules;
}

}  // namespace

ExitCode Monitor(const MonitorOptions& given, const Interrupt& interrupt, Output& output) {
  const MonitorOptions options = ByItsOwnTime(given);
  Session session(options, interrupt, output);
  session.Read(MakeLiveFeed(options, session.Options().model, /*tells_bytes=*/false));
  const Feed& feed = session.GetFeed();
  if (!options.rinex.base.empty() && feed.IsLive() && !session.Receiver().HasRawData()) {
    throw Failure(ExitCode::usage, "the model " + options.model + " has no raw data to log");
  }
  if (options.rinex.interval > 0.0 && feed.IsLive())
    CheckRawInterval(session.Receiver(), options.rinex.interval);
  const bool on_screen = options.format == Format::tui;
  Readings readings;
  FixAge fix_age(output.Text(), [&session] { return session.Engine().GetMessages(); });
  if (options.format == Format::text) session.Add(fix_age);
  const Shown shown(session, options, output, on_screen ? &readings : nullptr);
  std::optional<LiveScreen> screen;  // the last, so that its terminal is given back first
  if (on_screen) {
    session.Add(screen.emplace(session, readings, options.display));
  } else {
    feed.Announce(options.model);
  }
  const ExitCode code = session.Run(RulesOf(options, feed.IsLive()));
  if (code == ExitCode::done) feed.CheckUnderstood(session.Window());
  return code;
}

}  // namespace host
