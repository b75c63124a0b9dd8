#include "host/shown.h"

namespace host {

namespace {

RunFacts FactsOf(const Session& session, const Display& display) {
  const Feed& feed = session.GetFeed();
  const bool simulated = feed.GetKind() == Feed::Kind::simulated;
  return {simulated ? "simulated receiver" : feed.Name(), session.Options().model, session.Options().geoid,
          display};
}

}  // namespace

Shown::Shown(Session& session, const ShownOptions& options, Output& output, Sink* screen)
    : lines_(MakeSink(options.format, output.Text(), session.GetFeed().Name(), session.Options().geoid,
                      options.display)),
      exports_(options.exports, FactsOf(session, options.display), session.GetFeed().Files(),
               session.Engine(), screen != nullptr ? *screen : *lines_) {
  const RunOptions& run = session.Options();
  if (!options.rinex.base.empty()) {
    session.Add(rinex_.emplace(options.rinex, run.model, run.antenna_height));
  }
  session.Add(exports_);
  if (!options.record.empty()) session.Add(recorder_.emplace(options.record));
}

}  // namespace host
