#include "host/decode.h"

#include <memory>
#include <utility>

#include "host/records/jsonwriter.h"
#include "host/session/recordingfeed.h"

namespace host {

namespace {

void WriteSummary(std::string& out, Session& session) {
  const Tally tally = TallyOf(session.Engine());
  const Published& published = session.Window().GetPublished();
  JsonWriter json(out);
  json.BeginObject();
  json.Key("summary");
  json.BeginObject();
  json.Member("messages", tally.messages);
  json.Member("sentencesRecognised", tally.sentences);
  json.Member("checksumErrors", tally.checksum_errors);
  json.Member("binaryMessages", tally.binary);
  json.Member("badBinaryMessages", tally.bad_binary);
  json.Member("droppedBuffers", tally.dropped);
  json.Key("published");
  json.BeginObject();
  json.Member("WM_GPS_NEW_DATA", published.data);
  json.Member("WM_GPS_NEW_RAW_DATA", published.raw_data);
  json.Member("WM_GPS_NEW_EPHEMERIS", published.ephemeris);
  json.Member("WM_GPS_NEW_BIN", published.bin);
  json.EndObject();
  json.EndObject();
  json.EndObject();
  out += '\n';
}

std::unique_ptr<Feed> MakeFeed(const DecodeOptions& options) {
  auto feed = std::make_unique<RecordingFeed>(options.files);
  feed->SetChunk(options.chunk);
  feed->SetDate(options.date,
                options.format == Format::json || !options.rinex.base.empty() || options.exports.IsAny());
  feed->ShowProgress("decoding", options.format != Format::none);
  return feed;
}

}  // namespace

ExitCode Decode(const DecodeOptions& options, const Interrupt& interrupt, Output& output) {
  Session session(options, interrupt, output);
  session.Read(MakeFeed(options));
  const Shown shown(session, options, output);
  const ExitCode code = session.Run({});
  const bool tells = options.format == Format::record || options.format == Format::none;
  if (tells && code != ExitCode::interrupted) {
    WriteSummary(output.Text(), session);
    output.Flush();
  }
  if (code != ExitCode::interrupted) session.GetFeed().CheckUnderstood(session.Window());
  return code;
}

}  // namespace host
