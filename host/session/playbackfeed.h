#pragma once

#include <string>

#include "gpsengine/sentences/sentencefinder.h"
#include "host/session/feed.h"

namespace host {

/// A recording that the engine plays by itself, a line every half second, over and over.
class PlaybackFeed : public Feed, private Sink {
 public:
  /// `tells_bytes`: its sentences are wanted as bytes.
  explicit PlaybackFeed(const std::string& file, bool tells_bytes = false)
      : Feed(Kind::recording, file), tells_bytes_(tells_bytes) {}

  std::vector<std::string> Files() const override { return {Name()}; }
  void Open(CGPSEngine& engine, HostWindow& window) override;
  std::string TakeBytes() override { return std::exchange(bytes_, {}); }
  Sink* Records() override { return this; }
  bool WantsTexts() const override { return tells_bytes_; }

 private:
  bool OnString(const CString& text) override;

  const bool tells_bytes_;
  SentenceFinder sentences_;
  std::string bytes_;
};

}  // namespace host
