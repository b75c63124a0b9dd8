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

}  // namespace host
