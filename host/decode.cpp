#include "host/decode.h"

#include "gpsengine/engine/gpsengine.h"
#include "host/commands/models.h"
#include "host/records/hostwindow.h"
#include "host/records/jsonwriter.h"
#include "host/run/dating.h"
#include "host/run/kindlistener.h"
#include "host/run/progress.h"
#include "host/run/recording.h"
#include "host/run/unpacedclock.h"

namespace host {

namespace {

// From this size on a file takes long enough for someone to wonder.
constexpr std::int64_t kLargeFile = 8 << 20;

void WriteSummary(std::string& out, const CGPSEngine& engine, const CGPSReceiver& receiver,
                  const Published& published) {
  JsonWriter json(out);
  json.BeginObject();
  json.Key("summary");
  json.BeginObject();
  json.Member("messages", engine.GetMessages());
  json.Member("sentencesRecognised", receiver.GetSentencesRecognised());
  json.Member("checksumErrors", receiver.GetChecksumErrors());
  json.Member("binaryMessages", receiver.GetBinaryMessages());
  json.Member("badBinaryMessages", receiver.GetBadBinaryMessages());
  json.Member("droppedBuffers", engine.GetDroppedBuffers());
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

}  // namespace

ExitCode Decode(const DecodeOptions& options, const Interrupt& interrupt, Output& output) {
  const UnpacedClock clock;
  CGPSEngine engine;
  CGPSReceiver& receiver = SelectModel(engine, options.model);
  Recording recording(options.file);
  receiver.SetupReceiver(1, static_cast<int>(options.geoid), options.antenna_height, "", true);
  engine.SetReceiver(&receiver);
  receiver.Initialize();
  engine.m_bAttachRawData = true;

  const auto shown = MakeSink(options.format, output.Text(), options.file, options.geoid);
  Exports exports(options.exports, {options.file, options.model, options.geoid}, options.file, engine,
                  *shown);
  std::optional<RinexSink> rinex;
  if (!options.rinex.base.empty())
    rinex.emplace(options.rinex, options.model, options.antenna_height, exports);
  Sink& sink = rinex ? static_cast<Sink&>(*rinex) : exports;
  HostWindow window(sink, options.count);
  const bool dates = options.format == Format::json || !options.rinex.base.empty() || options.exports.IsAny();
  Dating dating(sink, options.date, dates, recording.Head());
  Progress progress("decoding", static_cast<double>(recording.Size()),
                    recording.Size() >= kLargeFile && CanShowProgress(options.format != Format::none));
  while (!window.IsFull() && !exports.IsOver()) {
    const auto bytes = recording.Next(static_cast<std::size_t>(options.chunk));
    if (bytes.empty()) break;
    if (interrupt.HasCome()) return ExitCode::interrupted;
    dating.Feed(bytes);
    CBinBuffer chunk(bytes.data(), static_cast<int>(bytes.size()));
    engine.UpdateGPSBuffer(chunk);
    window.Drain();
    if (rinex) rinex->Check();
    exports.Check();
    if (!output.Flush()) return ExitCode::done;
    progress.Update(static_cast<double>(recording.Done()));
  }
  if (options.format == Format::record || options.format == Format::none) {
    WriteSummary(output.Text(), engine, receiver, window.GetPublished());
    output.Flush();
  }
  exports.Finish();
  const bool logged = !rinex || rinex->Finish();
  if (!exports.IsOver()) CheckUnderstood(recording, window);
  return logged ? ExitCode::done : ExitCode::failed;
}

}  // namespace host
