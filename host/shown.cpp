#include "host/shown.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

namespace host {

namespace {

/// Records the bytes of a run to a file.
class Recorder : public Outlet {
 public:
  /// Empties the file. Throws a Failure if it cannot be written, now or later on.
  explicit Recorder(const std::string& file)
      : path_(file), file_(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
    if (!file_) throw Failure(ExitCode::failed, "cannot record to " + path_ + ": " + std::strerror(errno));
  }
  void OnBytes(std::string_view bytes) override {
    if (WriteWhole(file_.Get(), bytes)) return;
    throw Failure(ExitCode::failed, "recording to " + path_ + " has failed: " + std::strerror(errno));
  }

 private:
  const std::string path_;
  const UniqueDescriptor file_;
};

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
  if (!options.rinex.base.empty()) session.Add(Keep<RinexSink>(options.rinex, run.model, run.antenna_height));
  session.Add(exports_);
  if (!options.record.empty()) session.Add(Keep<Recorder>(options.record));
}

}  // namespace host
