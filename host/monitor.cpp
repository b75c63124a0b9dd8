#include "host/monitor.h"

#include <memory>
#include <optional>
#include <utility>

#include "host/corrected.h"
#include "host/session/fixage.h"
#include "host/tui/livescreen.h"

namespace host {

ExitCode Monitor(const MonitorOptions& given, const Interrupt& interrupt, Output& output) {
  const MonitorOptions options = ByItsOwnTime(given);
  if (options.explain) return ExplainRawData(options, output);
  Session session(options, interrupt, output);
  session.Read(MakeLiveFeed(options, session.Options().model, /*tells_bytes=*/false));
  const Feed& feed = session.GetFeed();
  LiveRawData raw_data(session, options);
  const bool on_screen = options.format == Format::tui;
  if (on_screen && feed.GetPort() != nullptr && feed.GetPort()->IsInput())
    throw Failure(ExitCode::usage,
                  "the screen has its keys from standard input: --port - needs another --format");
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
  RunRules rules;
  rules.is_strict = rules.follows = true;
  if (feed.IsLive()) rules.silence = options.timeout;
  raw_data.Rule(rules);
  const ExitCode code = session.Run(std::move(rules));
  if (code == ExitCode::done) feed.CheckUnderstood(session.Window());
  return code;
}

}  // namespace host
