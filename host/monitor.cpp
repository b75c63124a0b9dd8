#include "host/monitor.h"

#include <memory>
#include <optional>
#include <utility>

#include "host/corrected.h"
#include "host/session/fixage.h"
#include "host/session/rawoutput.h"
#include "host/tui/livescreen.h"

namespace host {

namespace {

RunRules RulesOf(const MonitorOptions& options, bool is_live) {
  RunRules rules;
  rules.is_strict = rules.follows = true;
  if (is_live) rules.silence = options.timeout;
  rules.attach_raw = options.attach_raw;
  if (options.rinex.base.empty()) return rules;
  rules.attach_raw = true;
  return rules;
}

ExitCode ExplainRawData(const MonitorOptions& options, Output& output) {
  output.Text() += RawOutput::Explain(options.model, options.rinex.interval);
  output.Flush();
  return ExitCode::done;
}

}  // namespace

ExitCode Monitor(const MonitorOptions& given, const Interrupt& interrupt, Output& output) {
  const MonitorOptions options = ByItsOwnTime(given);
  if (options.explain) return ExplainRawData(options, output);
  Session session(options, interrupt, output);
  session.Read(MakeLiveFeed(options, session.Options().model, /*tells_bytes=*/false));
  const Feed& feed = session.GetFeed();
  std::optional<RawOutput> raw_output;
  if (!options.rinex.base.empty() && feed.IsLive())
    session.Add(raw_output.emplace(session.Receiver(), options.rinex.interval));
  const bool on_screen = options.format == Format::tui;
  Readings readings;
  FixAge fix_age(output.Text(), [&session] { return session.Engine().GetMessages(); });
  if (options.format == Format::text) session.Add(fix_age);
  std::optional<Corrected> corrected;
  if (!options.corrections.source.empty())
    session.Add(corrected.emplace(session, options.corrections, output, options.format));
  const Shown shown(session, options, output, on_screen ? &readings : nullptr);
  std::optional<LiveScreen> screen;  // the last, so that its terminal is given back first
  if (on_screen) {
    session.Add(screen.emplace(session, readings, options.display));
    if (corrected) screen->ShowCorrections([&corrected] { return corrected->Status(); });
  } else {
    feed.Announce(options.model);
  }
  RunRules rules = RulesOf(options, feed.IsLive());
  if (raw_output) rules.on_open = [&](CGPSReceiver&) { raw_output->Start(); };
  const ExitCode code = session.Run(std::move(rules));
  if (code == ExitCode::done) feed.CheckUnderstood(session.Window());
  return code;
}

}  // namespace host
