#include "host/corrected.h"

#include <utility>

#include "gpsengine/face/words.h"
#include "host/exports/gga.h"
#include "host/line/port.h"
#include "host/run/face.h"

namespace host {

namespace {

constexpr double kLook = 1.0, kOldCorrections = 10.0, kSentenceHolds = 30.0;  // seconds

CorrectionLink::Write WriterOf(const Session& session) {
  const Feed& feed = session.GetFeed();
  if (!feed.IsLive()) {
    throw Failure(ExitCode::usage,
                  "--corrections goes to a receiver, and " + feed.Name() +
                      " is a recording: name the receiver's device with --port in place of --play");
  }
  if (!feed.GetPort()->TakesCommands()) {
    throw Failure(ExitCode::usage, "--corrections goes to a receiver, and " + feed.Name() +
                                       " is only listened to: name its own port, or tcp:// or rfc2217://");
  }
  return [&feed](std::string_view bytes) { return feed.Write(bytes); };
}

}  // namespace

Corrected::Corrected(Session& session, const CorrectionOptions& options, Output& output, Format format,
                     const CorrectionLink::Limits& limits)
    : session_(session),
      output_(output),
      format_(format),
      wants_position_(options.gga_interval > 0.0 && options.source.starts_with("ntrip")),
      link_(options, WriterOf(session), limits) {}

void Corrected::OnEvent(RunEvent event) {
  if (event == RunEvent::starting) link_.Start();
  if (event == RunEvent::over) return link_.Stop();
  link_.SetOpen(event == RunEvent::started || event == RunEvent::understood || event == RunEvent::back);
  if (!due_.IsSet()) due_.Set(kLook);
}

void Corrected::OnBytes(std::string_view bytes) {
  if (!wants_position_) return;
  sentences_.Feed(bytes, [this](std::string_view text) {
    const Fields sentence(text);
    constexpr int kQuality = 6;
    const bool is_known = sentence.Is("GGA") && sentence.Talker().starts_with('G');
    if (!is_known || sentence[kQuality].empty() || sentence[kQuality] == "0") return;
    link_.SetPosition(std::string(text.substr(text.rfind('$'))));
    sentence_.Set(kSentenceHolds);
  });
}

bool Corrected::OnData(const Record& record) {
  const bool has_sentence = sentence_.IsSet() && !sentence_.HasPassed();
  if (wants_position_ && record.HasFix() && !has_sentence) link_.SetPosition(GgaOf(record.epoch));
  return false;
}

void Corrected::Step() {
  if (!due_.HasPassed()) return;
  due_.Set(kLook);
  const CorrectionStatus status = link_.Status();
  if (format_ == Format::text) TellText(status);
  if (format_ == Format::json) TellJson(status);
}

void Corrected::TellText(const CorrectionStatus& status) {
  const bool fresh = status.age && *status.age < kOldCorrections;
  if (std::exchange(is_fresh_, fresh) == fresh) return;
  output_.Text() += fresh ? "corrections come from " + status.source + ": RTCM " + TypesOf(status) + '\n'
                          : "no corrections for " + Print("%.0f s\n", *status.age);
}

void Corrected::TellJson(const CorrectionStatus& status) {
  const auto text_of = [this](const CorrectionStatus& one) {
    std::string line;
    JsonWriter json(line);
    json.BeginObject();
    json.Member("class", "CORRECTIONS");
    json.Key("device");
    json.Utf8(session_.GetFeed().Name());
    WriteCorrections(json, one);
    json.EndObject();
    return line + '\n';
  };
  CorrectionStatus ageless = status;
  ageless.age.reset();
  std::string news = text_of(ageless);
  if (news == last_) return;
  last_ = std::move(news);
  output_.Text() += text_of(status);
}

void WriteCorrections(JsonWriter& json, const CorrectionStatus& status) {
  json.Key("source");
  json.Utf8(status.source);
  json.Member("state", NameOf(status.state));
  json.Known("trouble", status.trouble);
  if (status.age) json.MemberFixed("age", *status.age, 1);
  json.Member("messages", status.messages);
  json.Key("types");
  json.BeginObject();
  for (const auto& [type, count] : status.types) json.Member(std::to_string(type), count);
  json.EndObject();
  json.Member("badChecksums", status.bad_checksums);
  json.Member("bytes", status.bytes);
  json.Member("written", status.written);
  json.Member("dropped", status.dropped);
  json.Member("connections", status.connections);
}

}  // namespace host
