#include "host/live.h"

#include "host/session/linefeed.h"
#include "host/session/playbackfeed.h"
#include "host/session/recordingfeed.h"

namespace host {

std::unique_ptr<Feed> MakeLiveFeed(const LiveOptions& options, const std::string& model, bool tells_bytes) {
  if (options.play.empty()) return std::make_unique<LineFeed>(options.port, model);
  if (options.speed > 0.0) return std::make_unique<PacedFeed>(options.play, options.speed);
  return std::make_unique<PlaybackFeed>(options.play, tells_bytes);
}

ExitCode ExplainRawData(const LiveOptions& options, Output& output) {
  output.Text() += RawOutput::Explain(options.model, options.rinex.interval);
  output.Flush();
  return ExitCode::done;
}

LiveRawData::LiveRawData(Session& session, const LiveOptions& options)
    : attach_(options.rinex.base.empty() ? options.attach_raw : true) {
  const Port* const port = session.GetFeed().GetPort();
  if (options.rinex.base.empty() || port == nullptr || !port->TakesCommands()) return;
  session.Add(output_.emplace(session.Receiver(), options.rinex.interval));
}

void LiveRawData::Rule(RunRules& rules) {
  rules.attach_raw = attach_;
  if (output_) rules.on_open = [this](CGPSReceiver&) { output_->Start(); };
}

}  // namespace host
